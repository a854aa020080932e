#include "frontend/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/calls.h"
#include "base/paths.h"
#include "base/text.h"
#include "inventory/completion.h"
#include "xml/rvt_xml_parser.h"

std::string NameOf(const std::string& path) {
    return path == "-" ? "standard input" : Printable(path);
}

FileDescriptor OpenNamed(const std::string& path) {
    return path == "-" ? FileDescriptor(dup(STDIN_FILENO)) : OpenForReading(path);
}

std::string Source::Name() const {
    return NameOf(path);
}

namespace {

// What can be read once only, and what is no map, is read whole. False, with errno, when reading
// fails: a table would just be shorter.
bool ReadText(int fd, bool can_be_read_again, std::string& text) {
    static constexpr size_t kBeginning = 4096;
    text.resize(can_be_read_again ? kBeginning : 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(ReadOnce(fd, text.data(), text.size()), 0)));
    if (can_be_read_again && IsMap(text)) {
        text.clear();
        return true;
    }
    return ReadToEnd(fd, text);
}

Outcome ReadDocument(Source& source) {
    RVT_XML_Tree& tree = source.inventory.Tree();
    const Result<bool> is_whole =
        source.text.empty() && source.path != "-"
            ? ParseXMLFile(source.path, tree)
            : ParseXMLText(source.text, source.Name(), tree, DocumentRules::kMap);
    if (!is_whole.ok()) {
        Outcome outcome = is_whole.outcome();
        return outcome.cause()
                   ? outcome
                   : std::move(outcome).WithCause({source.Name(), "elements are nested too deep"});
    }
    source.outline = OutlineOf(source.inventory);
    Outcome outcome = source.inventory.NeedSystemMap(ExitCode::kIncompleteMap).outcome();
    const std::string message = outcome.message();
    return outcome.ok() ? outcome : std::move(outcome).WithCause({source.Name(), message});
}

}  // namespace

Result<Source> ReadSource(const std::string& path) {
    Source source{path, {}, {}, {}, {}};
    const FileDescriptor file = OpenNamed(path);
    if (!file.IsOpen()) {
        return WrongAt(source.Name(), strerror(errno), ExitCode::kNotWellFormed);
    }
    const mode_t type = path == "-" ? 0 : TypeOf(file.get());
    if (!ReadText(file.get(), type == S_IFREG || type == S_IFDIR, source.text)) {
        return WrongAt(source.Name(), strerror(errno), ExitCode::kNotWellFormed);
    }
    // The product's own is a map, whatever it holds.
    if (path == paths::kSystemMap || IsMap(source.text)) {
        Outcome outcome = ReadDocument(source);
        return outcome.ok() ? Result(std::move(source)) : outcome;
    }
    Result<InventoryFile> said = ReadInventoryFile(source.text, source.Name());
    if (said.ok()) {
        source.said = std::move(*said);
    }
    return said.ok() ? Result(std::move(source)) : said.outcome();
}

Outcome Complete(Source& source, const Outline& present) {
    if (!source.said) {
        return {};
    }
    const Result<Outline> completed = Completed(*source.said, present, false);
    source.outline = completed.ok() ? *completed : source.outline;
    return completed.outcome();
}

Result<Source> ReadMap(const std::string& path) {
    Result<Source> source = ReadSource(path);
    if (!source.ok()) {
        return source;
    }
    Outcome outcome = Complete(*source, OutlineOf(NewInventory()));
    return outcome.ok() ? std::move(source) : outcome;
}
