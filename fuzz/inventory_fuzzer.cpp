// Any bytes as two inventories in CSV or JSON, the second behind a line "%%": what is said makes an
// inventory, the same with a tree and without, saying it again changes nothing, and what is listed
// of it says the same.
#include <cstdint>

#include "in_process.h"
#include "report/completion.h"
#include "report/difference.h"
#include "report/list.h"
#include "report/script.h"

// What "present" becomes when "text" is said; as it is when that is refused.
static Inventory Said(std::string_view text, const Inventory& present, bool keep) {
    Inventory made;
    made.Tree() = present.Tree().Copy();
    if (IsMap(text)) {
        return made;
    }
    Result<InventoryFile> file = ReadInventoryFile(text, "file");
    if (!file.ok()) {
        Require(file.outcome().cause().has_value(), "a fault has a place");
        return made;
    }
    Result<Inventory> completed = Completed(*file, present, keep);
    const Result<Outline> outline = CompletedOutline(*file, present, keep);
    Require(completed.ok() == outline.ok() &&
                (!outline.ok() || Comparison(OutlineOf(*completed), *outline).IsEqual()),
            "what is compared is the inventory");
    return completed.ok() ? std::move(*completed) : std::move(made);
}

static std::string Listed(const Inventory& inventory, Listing::Format format) {
    Listing listing;
    listing.format = format;
    std::string text;
    Output out(text);
    Require(List(inventory, listing, out).ok() && out.Flush(), "an inventory can be listed");
    return text;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FreeBuffers();
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const size_t end = input.find("\n%%\n");
    const bool is_one = end == std::string_view::npos;
    const Inventory before = Said(input.substr(0, end), NewInventory(), false);
    for (const bool keep : {false, true}) {
        const std::string_view text = is_one ? input : input.substr(end + 4);
        const Inventory now = Said(text, before, keep);
        Require(Comparison(now, Said(text, now, keep)).IsEqual(), "the second time nothing");
        for (const auto format : {Listing::Format::kCsv, Listing::Format::kJson}) {
            Require(Comparison(now, Said(Listed(now, format), now, false)).IsEqual(),
                    "a list says what the inventory does");
            static_cast<void>(Said(Listed(now, format), before, keep));
        }
    }
    return 0;
}
