// One run: record, parse, do, end, and what is left to say.
#include <libgen.h>

#include <new>
#include <span>
#include <string>

#include "base/complaints.h"
#include "base/process.h"
#include "commands/parse_command.h"
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

// The message of the failure that ended the run.
static char rvt_err_msg[kLongestMessage + 1];

// Prints what the run has to say on standard error, the message of a failure last.
static void PrintErrors(std::string program, const Outcome& outcome) {
    rvt_err_msg[outcome.message().copy(rvt_err_msg, kLongestMessage)] = '\0';
    if (rvt_err_msg[0] != '\0') {
        Complain(std::string(basename(program.data())) + ": " + rvt_err_msg + "\n");
    }
    PrintComplaints();
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
    try {
        run.End(outcome);
        PrintErrors(argc > 0 ? argv[0] : "tqsmgr", outcome);
    } catch (const std::bad_alloc&) {
        // What could not be said is lost; the lock ends with the process.
    }
    return Number(outcome.code());
}
