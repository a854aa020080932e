// Telling other components of a change, by fixed shell commands.
#pragma once

#include "commands/actions.h"
#include "translog/rvt_trans_log.h"

// Who is to be told.
struct Notifications {
    bool web = false;   // the web front end
    bool kfxd = false;  // the console daemon
    bool lrp = false;   // the third component

    Notifications operator|(const Notifications& other) const {
        return {web || other.web, kfxd || other.kfxd, lrp || other.lrp};
    }
};

// Those that a change asks for and the command has left on.
Notifications NotificationsOf(const Command& command);

// Runs them. No lock may be held: a notification may run this program. One of the web that fails is
// recorded in the log, and nowhere else; the others' status is ignored.
void Notify(const Notifications& wanted, TransactionLog& log);
