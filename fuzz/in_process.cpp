#include "in_process.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "base/arena.h"
#include "base/output.h"
#include "base/paths.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// In the place of the arena: every piece of memory by itself, so that a step beyond it is seen.
// Buffers of outputs, the one large kind, are freed for the next input.
static std::vector<void*> buffers;
void* arena::Allocate(size_t size) {
    void* memory = calloc(1, size);
    if (size == Output::kBufferSize) {
        buffers.push_back(memory);
    }
    return memory;
}
char* arena::AllocateText(size_t size) {
    return static_cast<char*>(calloc(1, size + 1));
}
const char* arena::Copy(std::string_view text) {
    return std::copy(text.begin(), text.end(), AllocateText(text.size())) - text.size();
}

void PutFile(const std::string& path, std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string GetFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

static bool Install() {
    for (const std::filesystem::path path : {paths::kSystemMap, paths::kStdInCopy}) {
        std::filesystem::create_directories(path.parent_path());
    }
    std::filesystem::create_directories(paths::kEventsDir);
    PutFile(paths::kModels, "Server|M100\n");
    PutFile(paths::kOsTypes, "Unknown|\nlinux|\n");
    PutFile(std::string(paths::kEventsDir) + "/basic", "");
    // A document that is refused leaves the library set up, for all that follow.
    return !CheckXMLText("<", "none").ok();
}

void FreeBuffers() {
    std::for_each(buffers.begin(), buffers.end(), free);
    buffers.clear();
}

bool CanRead(const char* path, RVT_XML_Tree& tree) {
    tree = RVT_XML_Tree();
    const Result<bool> is_whole = ParseXMLFile(path, tree);
    return is_whole.ok() && *is_whole;
}

void Require(bool kept, const char* promise) {
    if (!kept) {
        static_cast<void>(fprintf(stderr, "not kept: %s\n", promise));
        abort();
    }
}

std::string Dump(const RVT_XML_Tree& tree) {
    std::string text, dump;
    Output out(text);
    Require(PrintTree(out, tree).ok() && out.Flush(), "a tree can be printed");
    for (const char c : text) {
        const bool is_space = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        if (!is_space || !dump.ends_with(' ')) {
            dump += is_space ? ' ' : c;
        }
    }
    return dump;
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    Require(Install(), "what is no document is refused");
    return 0;
}

#ifdef TQS_REPLAY
// Feeds the files of a folder to the target: its corpus as an ordinary test.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    for (const auto& file : std::filesystem::directory_iterator(argv[1])) {
        const std::string input = GetFile(file.path());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    }
}
#endif
