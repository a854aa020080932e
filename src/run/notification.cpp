#include "run/notification.h"

#include "base/outcome.h"
#include "base/paths.h"
#include "base/process.h"

// The exit status within a wait status; 255 for a shell that could not be started.
static int ExitStatus(int status) {
    return (status >> 8) & 0xFF;
}

Notifications NotificationsOf(const Command& command) {
    const Follow& follow = RowOf(command.action).follow;
    return {follow.web && command.notify_web, follow.daemon && command.notify_kfxd, follow.daemon};
}

void Notify(const Notifications& wanted, TransactionLog& log) {
    if (wanted.web) {
        if (const int status = RunShellCommand(paths::kNotifyWeb); status != 0) {
            log.PutMsg("Error: \"" + std::string(paths::kNotifyWeb) + "\" exited with " +
                       std::to_string(ExitStatus(status)) + ".\n");
        }
    }
    if (wanted.kfxd) {
        RunShellCommand(paths::kNotifyKfxd);
    }
    if (wanted.lrp) {
        RunShellCommand(paths::kNotifyLrp);
    }
}
