#include "frontend/tqs_apply.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/complaints.h"
#include "base/files.h"
#include "commands/parse_command.h"
#include "frontend/tqs_commands.h"
#include "report/difference.h"

namespace {

Result<ChangeScript> ReadScript(const std::string& path) {
    std::string text;
    const FileDescriptor file =
        path == "-" ? FileDescriptor(dup(STDIN_FILENO)) : OpenForReading(path.c_str());
    if (!file.IsOpen() || !ReadToEnd(file.get(), text)) {
        const std::string why = strerror(errno);
        return Outcome(ExitCode::kCannotOpen, why).WithCause({path, why});
    }
    return ReadChangeScript(text);
}

// Whether "-update cache" stands in words that may be no command line.
bool IsForCache(std::span<const char* const> words) {
    static constexpr auto kWords = std::to_array<std::string_view>({"-update", "cache"});
    return std::search(words.begin(), words.end(), kWords.begin(), kWords.end()) != words.end();
}

// What a script may not do with a command; empty for nothing.
std::string WhyForbidden(const ScriptCommand& next, const std::string& map) {
    const Result<Command> command = ParseCommand(next.words.subspan(1));
    const bool is_for_cache =
        command.ok() ? command->action == Action::kUpdateCache : IsForCache(next.words);
    if (next.input && !is_for_cache) {
        return "a here-document behind another command than -update cache";
    }
    if (is_for_cache && !next.input) {
        return "-update cache without a here-document";
    }
    if (!command.ok() || OnlyLooks(command->action)) {
        return "";
    }
    if (command->action == Action::kSetConfigValue || command->action == Action::kConvertMap) {
        return "a script changes the inventory alone";
    }
    return command->map == paths::kSystemMap || command->map == map ? "" : "another map";
}

std::vector<ScriptFault> FaultsOf(ChangeScript& script, const std::string& map) {
    std::vector<ScriptFault> faults = std::move(script.faults);
    for (const ScriptCommand& next : script.commands) {
        if (std::string why = WhyForbidden(next, map); !why.empty()) {
            faults.push_back({next.line, std::move(why)});
        }
    }
    std::ranges::stable_sort(faults, {}, &ScriptFault::line);
    return faults;
}

void ComplainOf(const std::string& path, size_t line, const std::string& text) {
    Complain("tqs: " + path + ":" + std::to_string(line) + ": " + text + "\n");
}

// Prints what a trial has made of the inventory.
Outcome PrintTrial(const RVT_XML_Tree& before, const Inventory& now) {
    Inventory present;
    present.Tree() = before;
    Output out(STDOUT_FILENO);
    PrintDifferences(Comparison(present, now).Differences(), Form::kText, out);
    return Delivered(out);
}

Outcome Try(Run& run, std::span<const ScriptCommand> commands, const ScriptOptions& options) {
    Outcome outcome = run.Check(commands, options);
    if (outcome.ok()) {
        outcome = run.OpenMap(options);
    }
    if (!outcome.ok()) {
        return outcome;
    }
    const RVT_XML_Tree before = run.Map().Tree().Copy();
    outcome = run.Apply(commands, options);
    return outcome.ok() ? PrintTrial(before, run.Map()) : outcome;
}

Outcome Change(Run& run, std::span<const ScriptCommand> commands, const ScriptOptions& options,
               const std::string& path) {
    Outcome outcome = run.BeginScript("tqs apply " + path);
    try {
        if (outcome.ok()) {
            outcome = run.Check(commands, options);
        }
        if (outcome.ok()) {
            outcome = run.OpenMap(options);
        }
        if (outcome.ok()) {
            outcome = run.Apply(commands, options);
        }
    } catch (const std::bad_alloc&) {
        outcome = {ExitCode::kWriteFailed, "Out of memory."};
    }
    run.EndScript(outcome);
    return outcome;
}

}  // namespace

Result<int> ApplyScript(const std::string& path, ScriptOptions options) {
    Result<ChangeScript> script = ReadScript(path);
    if (!script.ok()) {
        return script.outcome();
    }
    options.name = path == "-" ? "standard input" : path;
    const std::vector<ScriptFault> faults = FaultsOf(*script, options.map);
    for (const ScriptFault& fault : faults) {
        ComplainOf(options.name, fault.line, fault.text);
    }
    if (!faults.empty()) {
        return Outcome(ExitCode::kInvalidArgument, "");
    }
    Run run;
    Outcome outcome = options.is_trial ? Try(run, script->commands, options)
                                       : Change(run, script->commands, options, path);
    for (const auto& [line, refused] : run.Refusals()) {
        const std::string number = std::to_string(Number(refused.code()));
        ComplainOf(options.name, line,
                   refused.message().empty() ? "refused with code " + number : refused.message());
    }
    const bool is_told = !run.Refusals().empty() && !options.keeps_going;
    if (!outcome.ok()) {
        return is_told ? Outcome(outcome.code(), "") : outcome;
    }
    return run.Refusals().empty() ? 0 : Number(run.Refusals().front().outcome.code());
}
