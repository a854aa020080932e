// One run: what it adds to the log, the lock, the inventory, and what it commits. What it has to
// say on standard error stays with the complaints.
//
//     Run run;
//     Outcome outcome = run.Begin(words);
//     if (outcome.ok()) { outcome = run.Do(command); }
//     run.End(outcome);
//
// A script of commands is one run as well, one change that is made whole or not at all:
//
//     Outcome outcome = run.BeginScript("tqs apply lab.txt", options);
//     if (outcome.ok()) { outcome = run.Check(commands, options); }
//     if (outcome.ok()) { outcome = run.OpenMap(options); }
//     if (outcome.ok()) { outcome = run.Apply(commands, options); }
//     run.EndScript(outcome);
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/outcome.h"
#include "base/paths.h"
#include "commands/parse_command.h"
#include "model/inventory.h"
#include "run/map_lock.h"
#include "run/notification.h"
#include "run/sequence.h"
#include "translog/rvt_trans_log.h"

// A command of a script that was refused.
struct Refusal {
    size_t line;
    Outcome outcome;
};

// How a script is run.
struct ScriptOptions {
    std::string name;  // of the script, in a reader's message
    std::string map = paths::kSystemMap;
    std::optional<std::chrono::seconds> wait = {};  // for locks; none: as long as it takes
    bool keeps_going = false;                       // passes over what is refused
    bool is_trial = false;                          // takes no lock and writes nothing
    // Asked when all commands have run, before anything is written.
    std::function<Outcome(const Inventory&)> last_check = {};
    Notifications silenced = {};
};

class Run {
  public:
    // What a message calls standard output.
    static constexpr const char* kStdOut = "standard output";

    // Begins the entry in the log with "words", the program's own first. Fails as LogCommandLine.
    Outcome Begin(std::span<const char* const> words);

    // Does what "command" asks for: under the lock, on the map, with all that follows a change. A
    // text that was asked for is printed as Print does, so that whoever reads it, or does not,
    // holds up no other run; what changes files is recorded before. Fails as the first step that
    // does.
    Outcome Do(const Command& command);

    // Prints "text", which "name" stands for in the message when it is lost, once the lock is
    // released. Fails as Unlock, or with kWriteFailed "Write failed for \"%s\".".
    Outcome Print(std::string_view text, const char* name = kStdOut);

    // Ends the run, whatever happened: records its outcome in the log and releases the lock.
    void End(const Outcome& outcome);

    // Opens the log, for a run that its entry of comments calls "title". Fails as
    // TransactionLog::Open.
    Outcome BeginScript(std::string_view title, const ScriptOptions& options);

    // Refuses words that are none of a command line, which takes no lock. Fails as ParseCommand,
    // unless the run keeps going.
    Outcome Check(std::span<const ParsedCommand> commands, const ScriptOptions& options);

    // Takes the lock and reads the map. Fails as MapLock::Lock and ParseXMLFile.
    Outcome OpenMap(const ScriptOptions& options);
    [[nodiscard]] const Inventory& Map() const { return inventory_; }

    // Runs all commands that change something, each with the result of a run of its own, and then
    // writes the map, kfx.conf and all entries once, and notifies. Fails as the first command that
    // is refused, unless the run keeps going, or as the first step that does. Nothing has changed
    // then, unless kfx.conf cannot be written behind the map (kCannotOpen, kWriteFailed) or the
    // lock not be released.
    Outcome Apply(std::span<const ParsedCommand> commands, const ScriptOptions& options);

    // Commands that were refused, in their order.
    [[nodiscard]] const std::vector<Refusal>& Refusals() const { return refusals_; }

    // Ends the run, whatever happened: records a change that did not take place, with a line that
    // says what was "refused" where that is why, and releases the lock.
    void EndScript(const Outcome& outcome, const std::string& refused = "");

  private:
    // A text that was asked for, and how far it got.
    struct Answer {
        std::string text;
        Outcome outcome;
        const char* name = kStdOut;
    };

    // What the accepted commands of a script ask for besides the map.
    struct Asked {
        Notifications notifications;
        TransactionLog::Ending recorded;  // the last entry whose notification may be recorded,
        TransactionLog::Ending kfxconf;   // for kfx.conf,
        TransactionLog::Ending last;      // and the last of all
    };

    Outcome Open(const Command& command);
    Outcome Answered(const Command& command);
    Answer AnswerTo(const Command& command);
    Outcome Change(const Command& command);
    Outcome UpdateCache(const Command& command);
    Outcome Convert(const Command& command);
    Outcome WriteMap(const std::string& map);
    Outcome RegenerateKfxConf(const std::string& map);
    Outcome Commit(const Command& command);
    Outcome ApplyNext(const ParsedCommand& next, const ScriptOptions& options, Sequence& sequence);
    void Record(const ParsedCommand& next, const Outcome& outcome, const ScriptOptions& options);
    Outcome CommitScript(const ScriptOptions& options, const Follow& changes);
    Outcome WriteKfxConfBehindMap(const std::string& map);

    TransactionLog log_;
    MapLock lock_;
    Inventory inventory_;
    // Of a script.
    std::string title_;
    std::vector<Refusal> refusals_;
    bool is_written_ = false;  // the map, or kfx.conf where only that was asked for
    Asked asked_;
};
