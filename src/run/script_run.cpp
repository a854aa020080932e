// A run of many commands.
#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "base/process.h"
#include "base/text.h"
#include "run/lock_holder.h"
#include "run/run.h"

Outcome Run::BeginScript(std::string_view title, const ScriptOptions& options) {
    title_ = Printable(title);
    if (options.wait) {
        log_.WaitAtMost(*options.wait);
    }
    return log_.Open();
}

Outcome Run::Check(std::span<const ParsedCommand> commands, const ScriptOptions& options) {
    for (const ParsedCommand& next : commands) {
        if (!next.command.ok() && !options.keeps_going) {
            refusals_.push_back({next.line, next.command.outcome()});
            return next.command.outcome();
        }
    }
    return {};
}

Outcome Run::OpenMap(const ScriptOptions& options) {
    if (Outcome outcome = options.is_trial ? Outcome() : lock_.Lock(options.map, options.wait);
        !outcome.ok()) {
        // The holder's command line may have secrets, so it is no part of what the log gets.
        const bool is_held = outcome.message() == MapLock::kIsHeld;
        return is_held ? std::move(outcome).WithCause({"", DescribeHolder()}) : outcome;
    }
    Outcome outcome = ParseXMLFile(options.map, inventory_.Tree()).outcome();
    if (!outcome.ok() && !OpenProductFile(options.map, O_RDONLY | O_NONBLOCK).fd.IsOpen()) {
        const std::string why = strerror(errno);
        return std::move(outcome).WithCause({Printable(options.map), why});
    }
    return outcome;
}

// Adds the entry of a command, which names the map that a replay is to change. What is refused for
// its words has read no input.
void Run::Record(const ParsedCommand& next, const Outcome& outcome, const ScriptOptions& options) {
    const Result<Command>& command = next.command;
    if (options.is_trial) {
        return;
    }
    std::vector<const char*> words(next.words.begin(), next.words.end());
    if (options.map != paths::kSystemMap && !(command.ok() && command->names_map)) {
        words.insert(words.begin() + 1, {"-f", options.map.c_str()});
    }
    asked_.last = log_.LogRun(words, command.ok() ? next.input : std::nullopt, outcome);
}

Outcome Run::ApplyNext(const ParsedCommand& next, const ScriptOptions& options,
                       Sequence& sequence) {
    const Result<Command>& command = next.command;
    Outcome outcome = command.ok() ? sequence.Do(*command, next.input.value_or(""), options.name)
                                   : command.outcome();
    Record(next, outcome, options);
    asked_.kfxconf = command.ok() && sequence.MakesKfxConf() ? asked_.last : asked_.kfxconf;
    if (outcome.ok()) {
        const Notifications wanted = RowOf(command->action).follow.notify & ~command->silenced;
        asked_.recorded = MayRecord(wanted) ? asked_.last : asked_.recorded;
        asked_.notifications |= wanted;
    }
    return outcome;
}

Outcome Run::Apply(std::span<const ParsedCommand> commands, const ScriptOptions& options) {
    Sequence sequence(inventory_, options.map);
    for (const ParsedCommand& next : commands) {
        if (next.command.ok() && OnlyLooks(next.command->action)) {
            continue;
        }
        Outcome outcome = ApplyNext(next, options, sequence);
        if (outcome.ok()) {
            continue;
        }
        refusals_.push_back({next.line, outcome});
        if (!options.keeps_going) {
            return outcome;
        }
    }
    if (Outcome outcome = options.last_check ? options.last_check(inventory_) : Outcome();
        !outcome.ok()) {
        return outcome;
    }
    return options.is_trial ? Outcome() : CommitScript(options, sequence.Changes());
}

// Behind the map that is written. That there is no kfx.conf of it, the commands' entries tell.
Outcome Run::WriteKfxConfBehindMap(const std::string& map) {
    Outcome outcome = RegenerateKfxConf(map);
    return outcome.code() == ExitCode::kIncompleteMap ? Outcome() : outcome;
}

Outcome Run::CommitScript(const ScriptOptions& options, const Follow& changes) {
    if (Outcome outcome = log_.Reserve(); !outcome.ok()) {
        return outcome;
    }
    if (changes.map) {
        if (Outcome outcome = WriteMap(options.map); !outcome.ok()) {
            return outcome;
        }
        is_written_ = true;
    }
    if (changes.kfxconf) {
        Outcome outcome = WriteKfxConfBehindMap(options.map);
        is_written_ = is_written_ || outcome.code() != ExitCode::kLockFailed;
        if (!outcome.ok()) {
            return outcome;
        }
    }
    log_.Append();
    if (Outcome outcome = lock_.Unlock(); !outcome.ok()) {
        if (asked_.last.size > 0) {
            log_.Select(asked_.last);
            log_.PutExitCode(outcome);
        }
        return outcome;
    }
    AllowTermination();
    log_.Select(asked_.recorded);
    Notify(asked_.notifications & ~options.silenced, log_);
    return {};
}

// Where something was written and not recorded, kfx.conf could not be written.
void Run::EndScript(const Outcome& outcome, const std::string& refused) {
    if (is_written_ && !log_.IsAppended()) {
        log_.Select(asked_.kfxconf.size > 0 ? asked_.kfxconf : asked_.last);
        log_.PutExitCode(outcome);
    } else if (!log_.IsAppended()) {
        log_.LogRefusal(
            "# " + title_ + "\n# " + (refused.empty() ? "Nothing changed." : refused) + "\n",
            outcome);
        log_.Append();
    }
    static_cast<void>(lock_.Unlock());
    AllowTermination();
}
