#include "run/notification.h"

#include "base/outcome.h"
#include "base/paths.h"
#include "base/process.h"

// The exit status within a wait status; 255 for a shell that could not be started.
static int ExitStatus(int status) {
    return (status >> 8) & 0xFF;
}

void Notify(const Command& command, TransactionLog& log) {
    const Follow& follow = RowOf(command.action).follow;
    if (follow.web && command.notify_web) {
        if (const int status = RunShellCommand(paths::kNotifyWeb); status != 0) {
            log.PutMsg("Error: \"" + std::string(paths::kNotifyWeb) + "\" exited with " +
                       std::to_string(ExitStatus(status)) + ".\n");
        }
    }
    if (follow.daemon && command.notify_kfxd) {
        RunShellCommand(paths::kNotifyKfxd);
    }
    if (follow.daemon) {
        RunShellCommand(paths::kNotifyLrp);
    }
}
