#include "frontend/tqs_change.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <new>

#include "base/calls.h"
#include "base/complaints.h"
#include "base/files.h"
#include "commands/parse_command.h"
#include "frontend/source.h"
#include "frontend/tqs_commands.h"
#include "inventory/completion.h"
#include "plan/script.h"
#include "report/difference_form.h"

namespace {

Result<ChangeScript> ReadScript(const std::string& path) {
    std::string text;
    const FileDescriptor file = OpenNamed(path);
    if (!file.IsOpen() || !ReadToEnd(file.get(), text)) {
        const std::string why = strerror(errno);
        return Outcome(ExitCode::kCannotOpen, why).WithCause({NameOf(path), why});
    }
    return ReadChangeScript(text);
}

// Whether "-update cache" stands in words that are no command line.
bool IsForCache(std::span<const char* const> words) {
    static constexpr auto kWords = std::to_array<std::string_view>({"-update", "cache"});
    return std::search(words.begin(), words.end(), kWords.begin(), kWords.end()) != words.end();
}

// What a script may not do with a command; empty for nothing. What is no command line is refused
// later, and reads nothing.
std::string WhyForbidden(const ParsedCommand& next, const std::string& map) {
    const Result<Command>& command = next.command;
    const bool is_for_cache =
        command.ok() ? command->action == Action::kUpdateCache : IsForCache(next.words);
    if (next.input && !is_for_cache) {
        return "a here-document behind another command than -update cache";
    }
    if (!command.ok() || OnlyLooks(command->action)) {
        return "";
    }
    if (is_for_cache && !next.input) {
        return "-update cache without a here-document";
    }
    if (command->action == Action::kSetConfigValue || command->action == Action::kConvertMap) {
        return "a script changes the inventory alone";
    }
    return command->names_map && command->map != map ? "another map" : "";
}

// The wrong lines of a script: "faults", and what it may not do.
std::vector<ScriptFault> FaultsOf(std::span<const ParsedCommand> commands, const std::string& map,
                                  std::vector<ScriptFault> faults) {
    for (const ParsedCommand& next : commands) {
        if (std::string why = WhyForbidden(next, map); !why.empty()) {
            faults.push_back({next.line, std::move(why)});
        }
    }
    std::ranges::stable_sort(faults, {}, &ScriptFault::line);
    return faults;
}

void ComplainOf(const std::string& path, size_t line, const std::string& text) {
    ComplainOnOneLine(path + ":" + std::to_string(line) + ": " + text);
}

// Prints what a trial has made of the inventory.
Outcome PrintTrial(const RVT_XML_Tree& before, const Inventory& now) {
    Inventory present;
    present.Tree() = before;
    Output out(STDOUT_FILENO);
    PrintDifferences(Comparison(OutlineOf(present), OutlineOf(now)).Differences(), Form::kText,
                     out);
    return Delivered(out);
}

// What steps come to when memory may end in them.
Outcome Guarded(const std::function<Outcome()>& steps) {
    try {
        return steps();
    } catch (const std::bad_alloc&) {
        return {ExitCode::kWriteFailed, "Out of memory."};
    }
}

// Runs commands on the map that is open, or tries them and prints what would differ.
Outcome ApplyOrTry(Run& run, std::span<const ParsedCommand> commands,
                   const ScriptOptions& options) {
    if (!options.is_trial) {
        return run.Apply(commands, options);
    }
    const RVT_XML_Tree before = run.Map().Tree().Copy();
    Outcome outcome = run.Apply(commands, options);
    return outcome.ok() ? PrintTrial(before, run.Map()) : outcome;
}

// The text of a refusal.
std::string Why(const Outcome& refused) {
    return refused.message().empty() ? "refused with code " + std::to_string(Number(refused.code()))
                                     : refused.message();
}

std::string RefusedAt(const std::string& place) {
    return place + " refused, nothing changed.";
}

}  // namespace

Result<int> ApplyScript(const std::string& path, ScriptOptions options) {
    const Result<ChangeScript> script = ReadScript(path);
    if (!script.ok()) {
        return script.outcome();
    }
    options.name = NameOf(path);
    const std::vector<ParsedCommand> commands = ParseCommands(script->commands);
    const std::vector<ScriptFault> faults = FaultsOf(commands, options.map, script->faults);
    for (const ScriptFault& fault : faults) {
        ComplainOf(options.name, fault.line, fault.text);
    }
    if (!faults.empty()) {
        return Outcome(ExitCode::kInvalidArgument, "");
    }
    Run run;
    Outcome outcome = Guarded([&] {
        Outcome step = options.is_trial ? Outcome() : run.BeginScript("tqs apply " + path, options);
        if (step.ok()) {
            step = run.Check(commands, options);
        }
        if (step.ok()) {
            step = run.OpenMap(options);
        }
        return step.ok() ? ApplyOrTry(run, commands, options) : step;
    });
    const std::vector<Refusal>& refusals = run.Refusals();
    const bool is_refused = !refusals.empty() && !options.keeps_going;
    run.EndScript(outcome, is_refused ? RefusedAt("Line " + std::to_string(refusals[0].line)) : "");
    for (const auto& [line, refused] : refusals) {
        ComplainOf(options.name, line, Why(refused));
    }
    if (!outcome.ok()) {
        return is_refused ? Outcome(outcome.code(), "") : outcome;
    }
    return refusals.empty() ? 0 : Number(refusals[0].outcome.code());
}

namespace {

// What sync is about to do.
struct Plan {
    InventoryFile said;
    Outline now;  // what the map shall be
    Script script;
    std::string refused;  // the place of what stands in the way, which has been told
};

// Tells of what stands in the way, at "place".
void Tell(Plan& plan, const std::string& place, const std::string& text) {
    plan.refused = plan.refused.empty() ? place : plan.refused;
    ComplainOnOneLine(place + ": " + text);
}

// What the map shall be. A failure with a position has been told.
Outcome Complete(Source& source, const Outline& present, bool keep, Plan& plan) {
    plan.said = source.said ? std::move(*source.said) : FileOf(source.outline, source.Name());
    if (!source.said && !keep) {
        plan.now = source.outline;
        return {};
    }
    const Result<Outline> completed = Completed(plan.said, present, keep);
    if (completed.ok()) {
        plan.now = *completed;
    } else if (const auto& cause = completed.outcome().cause(); cause) {
        Tell(plan, cause->place, cause->text);
    }
    return completed.outcome();
}

// Tells of each that stands in the way, in the order of the file; what it does not name comes
// first.
Outcome Refused(Plan& plan, std::vector<Obstacle> obstacles) {
    const auto rows = RowsBySubject(plan.said);
    const auto row_of = [&rows](const Obstacle& obstacle) {
        const auto found = rows.find(obstacle.subject);
        return found == rows.end() ? nullptr : found->second;
    };
    std::ranges::stable_sort(obstacles, {}, [&row_of](const Obstacle& obstacle) {
        const Row* row = row_of(obstacle);
        return row == nullptr ? 0 : row->number;
    });
    for (Obstacle& obstacle : obstacles) {
        const Row* row = row_of(obstacle);
        const std::string place = row == nullptr ? plan.said.name : PositionOf(plan.said, *row);
        obstacle.text.insert(0, row == nullptr ? obstacle.subject + ": " : "");
        Tell(plan, place, obstacle.text);
    }
    return {obstacles.front().code, obstacles.front().text};
}

// Whether an inventory is the map itself, which another run may have changed since it was read.
bool IsSameFile(const std::string& path, const std::string& map) {
    struct stat one {};
    struct stat other {};
    return path != "-" && calls::Stat(path.c_str(), &one) == 0 &&
           calls::Stat(map.c_str(), &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

// The first difference of what the commands have made from what they should, if there is one.
Outcome WhyNotThere(const Comparison& comparison, const std::string& name) {
    if (comparison.IsEqual()) {
        return {};
    }
    const std::string text = "No commands lead there: " + TextOf(comparison.Differences().front());
    return Outcome(ExitCode::kIncompleteMap, text).WithCause({name, text});
}

// Plans the steps to what the source says.
Outcome FindSteps(Source& source, const Inventory& inventory, bool keep, Plan& plan) {
    const Outline present = OutlineOf(inventory);
    Outcome outcome = Complete(source, present, keep, plan);
    if (!outcome.ok()) {
        return outcome;
    }
    plan.script = UntriedScript(Comparison(present, plan.now));
    return plan.script.obstacles.empty() ? outcome : Refused(plan, plan.script.obstacles);
}

// Runs the steps of the plan, as a script of them would be.
Outcome RunSteps(Run& run, Plan& plan, const ScriptOptions& options) {
    Outcome outcome = ApplyOrTry(run, CommandsOf(plan.script), options);
    if (run.Refusals().empty()) {
        return outcome;
    }
    const auto& [index, refusal] = run.Refusals().front();
    // That the map lacks something is the fault of no step.
    const bool is_incomplete = refusal.code() == ExitCode::kIncompleteMap;
    const std::string& subject = is_incomplete ? "map" : plan.script.steps[index].subject;
    std::string text = Why(refusal);
    std::ranges::replace(text, '\n', ' ');
    return Refused(plan, {{subject, text, refusal.code()}});
}

}  // namespace

Result<int> SyncInventory(const std::string& path, bool keep, ScriptOptions options) {
    Result<Source> source = ReadSource(path);
    if (!source.ok()) {
        return source.outcome();
    }
    options.name = NameOf(path);
    Run run;
    Plan plan;
    options.last_check = [&plan, &options](const Inventory& result) {
        return WhyNotThere(Comparison(OutlineOf(result), plan.now), options.name);
    };
    const std::string title = "tqs sync " + path;
    bool has_begun = options.is_trial;
    Outcome outcome = Guarded([&] {
        Outcome step = run.OpenMap(options);
        if (step.ok()) {
            step = run.Map().NeedSystemMap(ExitCode::kIncompleteMap).outcome();
        }
        if (step.ok() && !IsSameFile(path, options.map)) {
            step = FindSteps(*source, run.Map(), keep, plan);
        }
        if (!step.ok() || plan.script.steps.empty()) {
            return step;
        }
        step = has_begun ? step : run.BeginScript(title, options);
        has_begun = true;
        return step.ok() ? RunSteps(run, plan, options) : step;
    });
    if (!outcome.ok() && !has_begun) {
        static_cast<void>(run.BeginScript(title, options));
    }
    run.EndScript(outcome, plan.refused.empty() ? "" : RefusedAt(plan.refused));
    return outcome.ok() ? Result(0) : plan.refused.empty() ? outcome : Outcome(outcome.code(), "");
}
