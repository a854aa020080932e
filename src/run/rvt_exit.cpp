#include "run/rvt_exit.h"

#include <cstdio>
#include <cstdlib>

#include "base/error.h"
#include "base/process.h"
#include "run/map_lock.h"
#include "translog/rvt_trans_log.h"

std::string program = "tqsmgr";

void RVTExit(ExitCode code) {
    HoldTermination();
    if (code != ExitCode::kOk && rvt_err_msg[0] != '\0') {
        static_cast<void>(fprintf(stderr, "%s: %s\n", program.c_str(), rvt_err_msg));
    }
    static_cast<void>(PutExitCode(code));
    static_cast<void>(Unlock());
    exit(Number(code));
}
