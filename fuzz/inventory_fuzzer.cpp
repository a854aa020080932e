// Any bytes as two inventories in CSV or JSON, the second behind a line "%%": what is said makes an
// inventory, the same with a tree and without, saying it again changes nothing, and what is listed
// of it says the same.
#include <cstdint>

#include "in_process.h"
#include "inventory/completion.h"
#include "plan/difference.h"
#include "report/list.h"

// What "present" becomes when "text" is said; as it is when that is refused.
static Outline Said(std::string_view text, const Outline& present, bool keep) {
    if (IsMap(text)) {
        return present;
    }
    Result<InventoryFile> file = ReadInventoryFile(text, "file");
    if (!file.ok()) {
        Require(file.outcome().cause().has_value(), "a fault has a position");
        return present;
    }
    const Result<Outline> completed = Completed(*file, present, keep);
    if (!completed.ok()) {
        return present;
    }
    const Inventory made = InventoryOf(*completed);
    Require(Comparison(OutlineOf(made), *completed).IsEqual(), "commands run on what is compared");
    return *completed;
}

static std::string Listed(const Outline& outline, Listing::Format format) {
    Listing listing;
    listing.format = format;
    std::string text;
    Output out(text);
    static_cast<void>(List(outline, listing, out));
    Require(out.Flush(), "an inventory can be listed");
    return text;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FreeBuffers();
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const size_t end = input.find("\n%%\n");
    const bool is_one = end == std::string_view::npos;
    const Outline before = Said(input.substr(0, end), OutlineOf(NewInventory()), false);
    for (const bool keep : {false, true}) {
        const std::string_view text = is_one ? input : input.substr(end + 4);
        const Outline now = Said(text, before, keep);
        Require(Comparison(now, Said(text, now, keep)).IsEqual(), "the second time nothing");
        for (const auto format : {Listing::Format::kCsv, Listing::Format::kJson}) {
            Require(Comparison(now, Said(Listed(now, format), now, false)).IsEqual(),
                    "a list says what the inventory does");
            static_cast<void>(Said(Listed(now, format), before, keep));
        }
    }
    return 0;
}
