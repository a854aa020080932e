// Bytes as a run: words of the command line, a line each; the map; standard input. The three are
// parted by lines "%%". A run that fails leaves the map file and the tree; one that succeeds leaves
// a map file that comes back as the tree.
#include <cstdint>
#include <cstring>
#include <vector>

#include "base/output.h"
#include "base/paths.h"
#include "commands/actions.h"
#include "commands/parse_command.h"
#include "daemonconf/kfxconf.h"
#include "in_process.h"
#include "model/conversion.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// Takes what stands before "end", with it, off the text.
static std::string Take(std::string_view& text, std::string_view end) {
    const size_t at = text.find(end);
    const std::string taken(text.substr(0, at));
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + end.size());
    return taken;
}

static Result<Command> ParseWords(std::string text) {
    std::vector<const char*> words;
    for (char* word = strtok(text.data(), "\n"); word != nullptr; word = strtok(nullptr, "\n")) {
        words.push_back(word);
    }
    return ParseCommand(words);
}

// Does what the command does to an inventory, and makes what follows it.
static Outcome Do(const Command& command, Inventory& inventory, std::string_view input) {
    RVT_XML_Tree cache_document;
    if (command.action == Action::kUpdateCache) {
        const Result<bool> is_whole = ParseXMLText(input, "input", cache_document);
        if (!is_whole.ok()) {
            return is_whole.outcome();
        }
    }
    Outcome outcome = command.action == Action::kConvertMap
                          ? DoVersionConversion(inventory).outcome()
                          : Execute(command, inventory, cache_document);
    if (outcome.ok()) {
        outcome = WriteXMLFile(paths::kSystemMap, inventory.Tree(), [] { return Outcome(); });
    }
    std::string lines;
    Output out(lines);
    static_cast<void>(WriteKfxConf(out, inventory, ""));
    return outcome;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FreeBuffers();
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const Result<Command> command = ParseWords(Take(input, "\n%%\n"));
    if (!command.ok()) {
        return 0;
    }
    const std::string map = Take(input, "\n%%\n");
    Inventory inventory;
    PutFile(paths::kSystemMap, map);
    if (!CanRead(paths::kSystemMap, inventory.Tree())) {
        return 0;
    }
    const std::string before = Dump(inventory.Tree());
    const Outcome outcome = Do(*command, inventory, input);
    if (!outcome.ok()) {
        Require(GetFile(paths::kSystemMap) == map, "a failed command leaves the map");
        Require(command->action == Action::kConvertMap || Dump(inventory.Tree()) == before,
                "a failed command changes nothing");
        return 0;
    }
    RVT_XML_Tree read;
    Require(CanRead(paths::kSystemMap, read), "the map stays readable");
    Require(Dump(read) == Dump(inventory.Tree()), "the map comes back");
    return 0;
}
