#include "frontend/notification.h"

#include "base/error.h"
#include "base/paths.h"
#include "base/process.h"
#include "frontend/options.h"
#include "translog/rvt_trans_log.h"

// The exit status within a wait status; 255 for a shell that could not be started.
static int ExitStatus(int status) {
    return (status >> 8) & 0xFF;
}

static void NotifyWeb() {
    const int status = RunShellCommand(paths::kNotifyWeb);
    if (status != 0) {
        NoteError("Error: \"%s\" exited with %d.\n", paths::kNotifyWeb, ExitStatus(status));
        PutMsg(rvt_err_msg);
    }
}

void NotifyComponents(bool web, bool daemon) {
    if (web && notify_web) {
        NotifyWeb();
    }
    if (daemon && notify_kfxd) {
        RunShellCommand(paths::kNotifyKfxd);
    }
    if (daemon && notify_lrp) {
        RunShellCommand(paths::kNotifyLrp);
    }
}
