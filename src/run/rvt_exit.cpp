#include "run/rvt_exit.h"

#include <cstdlib>

#include "base/error.h"
#include "base/process.h"
#include "run/map_lock.h"
#include "translog/rvt_trans_log.h"

std::string program = "tqsmgr";

void RVTExit(ExitCode code) {
    if (code != ExitCode::kOk && rvt_err_msg[0] != '\0') {
        Complain(program + ": " + rvt_err_msg + "\n");
    }
    static_cast<void>(PutExitCode(code));
    static_cast<void>(Unlock());
    AllowTermination();
    PrintComplaints();
    exit(Number(code));
}
