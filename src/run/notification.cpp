#include "run/notification.h"

#include "base/process.h"

// The exit status within a wait status; 255 for a shell that could not be started.
static int ExitStatus(int status) {
    return (status >> 8) & 0xFF;
}

// Calls "visit" with the row of each that is wanted.
static void VisitRows(const Notifications& wanted,
                      const std::function<void(const NotificationRow& row)>& visit) {
    const auto rows = NotificationTable();
    for (size_t i = 0; i < rows.size(); ++i) {
        if (wanted.test(i)) {
            visit(rows[i]);
        }
    }
}

bool MayRecord(const Notifications& wanted) {
    bool may_record = false;
    VisitRows(wanted, [&may_record](const NotificationRow& row) {
        may_record = may_record || row.is_recorded;
    });
    return may_record;
}

void Notify(const Notifications& wanted, TransactionLog& log) {
    VisitRows(wanted, [&log](const NotificationRow& row) {
        const int status = RunShellCommand(row.command);
        if (status != 0 && row.is_recorded) {
            log.PutMsg("Error: \"" + std::string(row.command) + "\" exited with " +
                       std::to_string(ExitStatus(status)) + ".\n");
        }
    });
}
