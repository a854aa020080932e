// A run of many commands.
#include "base/process.h"
#include "commands/parse_command.h"
#include "run/run.h"

Outcome Run::BeginScript(std::string title) {
    title_ = std::move(title);
    return log_.Open();
}

Outcome Run::Check(std::span<const ScriptCommand> commands, const ScriptOptions& options) {
    for (const ScriptCommand& next : commands) {
        const Result<Command> command = ParseCommand(next.words.subspan(1));
        if (!command.ok() && !options.keeps_going) {
            refused_line_ = next.line;
            refusals_.push_back({next.line, command.outcome()});
            return command.outcome();
        }
    }
    return {};
}

Outcome Run::OpenMap(const ScriptOptions& options) {
    if (Outcome outcome = options.is_trial ? Outcome() : lock_.Lock(options.wait); !outcome.ok()) {
        return outcome;
    }
    return ParseXMLFile(options.map, inventory_.Tree()).outcome();
}

// Adds the entry of a command, which names the map that a replay is to change. "named" is the one
// that its words name.
void Run::Record(const ScriptCommand& next, const std::string& named, const Outcome& outcome,
                 const std::string& map) {
    std::vector<const char*> words(next.words.begin(), next.words.end());
    if (map != named) {
        words.insert(words.begin() + 1, {"-f", map.c_str()});
    }
    asked_.last = log_.LogRun(words, next.input, outcome);
}

Outcome Run::ApplyNext(const ScriptCommand& next, const Command& command,
                       const ScriptOptions& options, Sequence& sequence) {
    Outcome outcome = sequence.Do(command, next.input.value_or(""), options.name);
    Record(next, command.map, outcome, options.map);
    asked_.kfxconf = sequence.MakesKfxConf() ? asked_.last : asked_.kfxconf;
    if (outcome.ok()) {
        const Notifications wanted = NotificationsOf(command);
        asked_.web = wanted.web ? asked_.last : asked_.web;
        asked_.notifications = asked_.notifications | wanted;
    }
    return outcome;
}

Outcome Run::Apply(std::span<const ScriptCommand> commands, const ScriptOptions& options) {
    Sequence sequence(inventory_, options.map);
    log_.Expect(commands);
    for (const ScriptCommand& next : commands) {
        const Result<Command> command = ParseCommand(next.words.subspan(1));
        if (command.ok() && OnlyLooks(command->action)) {
            continue;
        }
        Outcome outcome =
            command.ok() ? ApplyNext(next, *command, options, sequence) : command.outcome();
        if (!command.ok()) {
            Record(next, paths::kSystemMap, outcome, options.map);
        }
        if (outcome.ok()) {
            continue;
        }
        refusals_.push_back({next.line, outcome});
        if (!options.keeps_going) {
            refused_line_ = next.line;
            return outcome;
        }
    }
    return options.is_trial ? Outcome() : CommitScript(options, sequence.Changes());
}

// Behind the map that is written. That there is no kfx.conf of it, the commands' entries tell.
Outcome Run::WriteKfxConfBehindMap() {
    inventory_.ShowAsMarked();
    Outcome outcome = RegenerateKfxConf();
    return outcome.code() == ExitCode::kIncompleteMap ? Outcome() : outcome;
}

Outcome Run::CommitScript(const ScriptOptions& options, const Follow& changes) {
    if (Outcome outcome = log_.Reserve(); !outcome.ok()) {
        return outcome;
    }
    if (changes.map) {
        inventory_.ShowAsAccepted();
        if (Outcome outcome = WriteMap(options.map); !outcome.ok()) {
            return outcome;
        }
    }
    if (changes.kfxconf) {
        Outcome outcome = WriteKfxConfBehindMap();
        if (!outcome.ok() && outcome.code() != ExitCode::kLockFailed) {
            log_.Select(asked_.kfxconf);
            log_.PutExitCode(outcome);
        }
        if (!outcome.ok()) {
            return outcome;
        }
    }
    log_.Append();
    if (Outcome outcome = lock_.Unlock(); !outcome.ok()) {
        log_.Select(asked_.last);
        log_.PutExitCode(outcome);
        return outcome;
    }
    AllowTermination();
    const Notifications& wanted = asked_.notifications;
    log_.Select(asked_.web);
    Notify({wanted.web && options.notifies_web, wanted.kfxd && options.notifies_kfxd, wanted.lrp},
           log_);
    return {};
}

void Run::EndScript(const Outcome& outcome) {
    if (!log_.IsAppended()) {
        std::string lines = "# " + title_ + "\n# ";
        lines += refused_line_
                     ? "Line " + std::to_string(*refused_line_) + " refused, nothing changed."
                     : "Nothing changed.";
        log_.LogRefusal(lines + "\n", outcome);
        log_.Append();
    }
    static_cast<void>(lock_.Unlock());
    AllowTermination();
}
