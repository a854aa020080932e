// One run: its entry in the log, the lock, the inventory, and what it commits. What it has to say
// on standard error stays with the complaints.
//
//     Run run;
//     Outcome outcome = run.Begin(words);
//     if (outcome.ok()) { outcome = run.Do(command); }
//     run.End(outcome);
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"
#include "run/map_lock.h"
#include "translog/rvt_trans_log.h"

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

  private:
    // A text that was asked for, and how far it got.
    struct Answer {
        std::string text;
        Outcome outcome;
        const char* name = kStdOut;
    };

    Outcome Open(const Command& command);
    Outcome Answered(const Command& command);
    Answer AnswerTo(const Command& command);
    Outcome Change(const Command& command);
    Outcome UpdateCache(const Command& command);
    Outcome Convert(const Command& command);
    Outcome WriteMap(const Command& command);
    Outcome RegenerateKfxConf();
    Outcome Commit(const Command& command);

    TransactionLog log_;
    MapLock lock_;
    Inventory inventory_;
};
