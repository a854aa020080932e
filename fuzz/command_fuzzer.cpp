// Bytes as a run: words of the command line, a line each; the map; standard input. The three are
// parted by lines "%%". A run that fails leaves the map file and the tree; one that succeeds leaves
// a map file that comes back as the tree.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "base/error.h"
#include "base/paths.h"
#include "base/process.h"
#include "frontend/do_action.h"
#include "frontend/get_args.h"
#include "frontend/options.h"
#include "in_process.h"
#include "run/rvt_exit.h"

// Takes what stands before "end", with it, off the text.
static std::string Take(std::string_view& text, std::string_view end) {
    const size_t at = text.find(end);
    const std::string taken(text.substr(0, at));
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + end.size());
    return taken;
}

static bool ParseWords(std::string text) {
    ClearError();
    std::vector<char*> argv = {program.data()};
    for (char* word = strtok(text.data(), "\n"); word != nullptr; word = strtok(nullptr, "\n")) {
        argv.push_back(word);
    }
    const bool valid = !EndOf([&] { GetArgs(static_cast<int>(argv.size()), argv.data()); });
    // Whatever the words name, only files of the folder are touched.
    xml_file = paths::kSystemMap;
    options.kfxd_conf_file = "kfxd.cfg";
    return valid;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    if (!ParseWords(Take(input, "\n%%\n"))) {
        return 0;
    }
    const std::string map = Take(input, "\n%%\n");
    inventory = Inventory();
    PutFile(xml_file, map);
    PutFile("stdin", input);
    close(STDIN_FILENO);
    if (open("stdin", O_RDONLY) != STDIN_FILENO || !CanRead(xml_file, inventory.Tree())) {
        return 0;
    }
    const std::string before = Dump(inventory.Tree());
    const auto end = EndOf(DoAction);
    AllowTermination();
    if (end && GetFile(xml_file) == map) {
        Require(*end != ExitCode::kOk, "an action that ends a run has failed");
        Require(action == kConvertMap || Dump(inventory.Tree()) == before,
                "a failed command changes nothing");
        return 0;
    }
    // The map may also lack what kfx.conf needs, which shows when it is written already.
    Require(!end || (*end == ExitCode::kIncompleteMap &&
                     (action <= kRemoveSystem || action == kConvertMap)),
            "a failed run leaves the map");
    RVT_XML_Tree read;
    Require(CanRead(xml_file, read), "the map stays readable");
    Require(Dump(read) == Dump(inventory.Tree()), "the map comes back");
    return 0;
}
