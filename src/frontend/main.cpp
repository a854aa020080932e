// One run: record, parse, lock, read, act, release, notify, exit.
#include <new>
#include <span>

#include "base/process.h"
#include "frontend/parse_command.h"
#include "frontend/usage.h"
#include "run/run.h"

static Outcome Do(Run& run, std::span<const char* const> words) {
    if (Outcome outcome = run.Begin(words); !outcome.ok()) {
        return outcome;
    }
    const Result<Command> command = ParseCommand(words.subspan(words.empty() ? 0 : 1));
    if (!command.ok()) {
        return command.outcome();
    }
    switch (command->action) {
        case Action::kShowHelp:
            return run.Print(usage_msg);
        case Action::kShowVersion:
            return run.Print("TQS version " TQS_VERSION " build date " TQS_BUILD_DATE "\n");
        default:
            return run.Do(*command);
    }
}

int main(int argc, char** argv) {
    PrepareProcess();
    Run run;
    Outcome outcome;
    try {
        outcome = Do(run, {argv, static_cast<size_t>(argc)});
    } catch (const std::bad_alloc&) {
        outcome = {ExitCode::kWriteFailed, "Out of memory."};
    }
    return run.End(outcome);
}
