#include "frontend/tqs_commands.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "base/calls.h"
#include "base/complaints.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/text.h"
#include "frontend/source.h"
#include "inventory/completion.h"
#include "plan/script.h"
#include "report/check.h"
#include "report/difference_form.h"
#include "run/kfxconf_file.h"
#include "xml/rvt_xml_parser.h"

namespace {

size_t TerminalColumns() {
    struct winsize size {};
    return isatty(STDOUT_FILENO) == 1 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col
                                                                                      : 0;
}

}  // namespace

Outcome Delivered(Output& out) {
    if (out.Flush()) {
        return {};
    }
    return errno == EPIPE ? Outcome(ExitCode::kWriteFailed, "") : LostOutput("standard output");
}

Result<int> ListItems(const std::string& map, Listing listing) {
    const Result<Source> source = ReadMap(map);
    if (!source.ok()) {
        return source.outcome();
    }
    listing.columns = TerminalColumns();
    Output out(STDOUT_FILENO);
    const std::vector<std::string> complaints = List(source->outline, listing, out);
    if (Outcome outcome = Delivered(out); !outcome.ok()) {
        return outcome;
    }
    std::ranges::for_each(complaints, ComplainOnOneLine);
    return complaints.empty() ? 0 : 1;
}

namespace {

bool IsSameFile(const std::string& one, const char* other) {
    struct stat a {};
    struct stat b {};
    return calls::Stat(one.c_str(), &a) == 0 && calls::Stat(other, &b) == 0 &&
           a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// What changes of a file when it is written or replaced.
std::string StampOf(const char* path) {
    struct stat status {};
    if (calls::Stat(path, &status) != 0) {
        return "";
    }
    return std::to_string(status.st_ino) + ' ' + std::to_string(status.st_size) + ' ' +
           std::to_string(status.st_mtim.tv_sec) + '.' + std::to_string(status.st_mtim.tv_nsec);
}

std::string Stamps() {
    return StampOf(paths::kSystemMap) + ' ' + StampOf(paths::kKfxConf);
}

// Whether kfx.conf is what the inventory gives. One that gives none is wrong in other ways.
bool IsKfxConfRight(const Inventory& inventory) {
    std::string wanted;
    std::string present;
    Output out(wanted);
    if (!PutKfxConf(inventory, out).ok() || !out.Flush()) {
        return true;
    }
    const FileDescriptor file = OpenForReading(paths::kKfxConf);
    return file.IsOpen() && ReadToEnd(file.get(), present, wanted.size()) && present == wanted;
}

// A run may be between its two files, so a difference is looked at again, for up to a second, as
// long as one of them changes.
bool IsKfxConfRightByAndBy(const Inventory& inventory) {
    static constexpr int kSteps = 5;
    static constexpr struct timespec kStep = {0, 200'000'000};
    bool is_right = IsKfxConfRight(inventory);
    for (int step = 0; !is_right && step < kSteps; ++step) {
        const std::string before = Stamps();
        nanosleep(&kStep, nullptr);
        const Result<Source> again = ReadMap(paths::kSystemMap);
        is_right = again.ok() && IsKfxConfRight(again->inventory);
        if (Stamps() == before) {
            break;
        }
    }
    return is_right;
}

// The positions that findings give: of a map, the lines of its start tags; of another inventory,
// the names of its elements or, in CSV, their lines. None when the map can no longer be read.
std::vector<std::string> PositionsIn(const Source& source) {
    if (source.said) {
        const auto rows = RowsBySubject(*source.said);
        std::vector<std::string> positions = {source.said->is_csv ? "1" : "security"};
        for (const Element* element : source.outline.elements) {
            positions.push_back(PositionIn(*source.said, *rows.at(Label(*element))));
        }
        return positions;
    }
    std::string text = source.text;
    if (text.empty() && source.path != "-") {
        const FileDescriptor file = OpenForReading(source.path);
        static_cast<void>(file.IsOpen() && ReadToEnd(file.get(), text));
    }
    const Result<std::vector<size_t>> lines = LinesOfStartTags(text, source.Name());
    std::vector<std::string> positions = {"?"};
    for (const size_t line : lines.ok() ? *lines : std::vector<size_t>()) {
        positions.push_back(std::to_string(line));
    }
    return positions;
}

// map.xml:214: error: console db2: port 2003 is in use at 10.1.1.5 by db1 (line 87)
void PutFindings(const Source& source, const std::vector<Finding>& findings, Output& out) {
    const std::vector<std::string> positions =
        findings.empty() ? std::vector<std::string>() : PositionsIn(source);
    const auto text_of = [&positions](size_t position) {
        return position < positions.size() ? positions[position] : "?";
    };
    const bool has_lines = !source.said || source.said->is_csv;
    for (const Finding& finding : findings) {
        out.Put(source.Name() + ":" + text_of(finding.position));
        out.Put(finding.is_error ? ": error: " : ": warning: ");
        out.Put(OneLine(finding.text));
        out.Put(finding.earlier == 0 || !has_lines ? "\n"
                                                   : " (line " + text_of(finding.earlier) + ")\n");
    }
}

}  // namespace

Result<int> CheckMap(const std::string& map) {
    Result<Source> source = ReadMap(map);
    if (!source.ok()) {
        return source.outcome();
    }
    std::vector<Finding> findings =
        Check(source->outline, source->said ? nullptr : &source->inventory.Tree());
    if (map != "-" && IsSameFile(map, paths::kSystemMap) &&
        !IsKfxConfRightByAndBy(source->inventory)) {
        findings.insert(findings.begin(),
                        {1, true, std::string(paths::kKfxConf) + " is not what the map gives"});
    }
    Output out(STDOUT_FILENO);
    PutFindings(*source, findings, out);
    const auto errors = std::ranges::count(findings, true, &Finding::is_error);
    const auto all = static_cast<ptrdiff_t>(findings.size());
    out.Put(std::to_string(errors) + " errors, " + std::to_string(all - errors) + " warnings\n");
    Outcome outcome = Delivered(out);
    return outcome.ok() ? Result(errors == 0 ? 0 : 1) : outcome;
}

// Prints the commands, or says why there are none. "status" is that of a script with commands.
static Result<int> Deliver(const Script& script, int status) {
    for (const Obstacle& obstacle : script.obstacles) {
        ComplainOnOneLine(obstacle.subject + ": " + obstacle.text);
    }
    if (!script.obstacles.empty()) {
        return Outcome(ExitCode::kIncompleteMap, "");
    }
    Output out(STDOUT_FILENO);
    PrintScript(script, out);
    Outcome outcome = Delivered(out);
    return outcome.ok() ? Result(script.steps.empty() ? 0 : status) : outcome;
}

// Gives two sources their inventories; where both are files, each says what the other does not.
static Outcome CompleteBoth(Source& one, Source& other) {
    Outcome outcome = one.said ? Complete(other, OutlineOf(NewInventory())) : Outcome();
    if (outcome.ok()) {
        outcome = Complete(one, other.outline);
    }
    return outcome.ok() ? Complete(other, one.outline) : outcome;
}

Result<int> DiffMaps(const std::string& before, const std::string& now, DiffForm form) {
    if (before == "-" && now == "-") {
        return Outcome(ExitCode::kInvalidArgument, "Only one of two maps can be standard input.");
    }
    Result<Source> one = ReadSource(before);
    if (!one.ok()) {
        return one.outcome();
    }
    Result<Source> other = ReadSource(now);
    if (!other.ok()) {
        return other.outcome();
    }
    if (Outcome outcome = CompleteBoth(*one, *other); !outcome.ok()) {
        return outcome;
    }
    if (form == DiffForm::kCommands) {
        const Inventory& present = one->said ? InventoryOf(one->outline) : one->inventory;
        return Deliver(ScriptFromTo(present, other->outline), 1);
    }
    const std::vector<Difference> differences =
        Comparison(one->outline, other->outline).Differences();
    Output out(STDOUT_FILENO);
    PrintDifferences(differences, form == DiffForm::kJson ? Form::kJson : Form::kText, out);
    Outcome outcome = Delivered(out);
    return outcome.ok() ? Result(differences.empty() ? 0 : 1) : outcome;
}

Result<int> ExportMap(const std::string& map) {
    const Result<Source> source = ReadMap(map);
    return source.ok() ? Deliver(ScriptFromTo(NewInventory(), source->outline), 0)
                       : source.outcome();
}
