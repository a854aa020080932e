// One run: record, parse, lock, read, act, release, notify, exit.
#include <libgen.h>

#include <new>
#include <string>

#include "base/error.h"
#include "base/process.h"
#include "frontend/do_action.h"
#include "frontend/get_args.h"
#include "frontend/options.h"
#include "run/map_lock.h"
#include "run/rvt_exit.h"
#include "translog/rvt_trans_log.h"
#include "xml/rvt_xml_parser.h"

static void SetProgram(std::string path) {
    program = basename(path.data());
}

static void EndRunUnlessOk(ExitCode code) {
    if (code != ExitCode::kOk) {
        RVTExit(code);
    }
}

// Reads the map. The parser ends the run at an error in it; what it only reports leaves a tree that
// the command then finds incomplete, but the -config actions look at nothing in the map.
static void ReadMap() {
    const TerminationAllowed while_reading;
    const int result = ParseXMLFile(xml_file, &inventory.Tree());
    if (result != 0 && (action == kGetConfigValue || action == kSetConfigValue)) {
        RVTExit(ExitCode::kNotWellFormed);
    }
}

static void Run(int argc, char** argv) {
    if (argc > 0) {
        SetProgram(argv[0]);
    }
    EndRunUnlessOk(LogCommandLine(argc, argv));
    GetArgs(argc, argv);
    EndRunUnlessOk(Lock());
    ReadMap();
    DoAction();
    // The entry comes before the release of the lock, so that the log has the order of the runs.
    static_cast<void>(PutExitCode(ExitCode::kOk));
    EndRunUnlessOk(Unlock());
    AllowTermination();
    NotifyOfAction();
}

int main(int argc, char** argv) {
    PrepareProcess();
    try {
        Run(argc, argv);
    } catch (const std::bad_alloc&) {
        RVTExit(Fail(ExitCode::kWriteFailed, "Out of memory."));
    }
    RVTExit(ExitCode::kOk);
}
