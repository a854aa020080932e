// Telling other components of a change, by fixed shell commands.
#pragma once

#include "commands/actions.h"
#include "translog/rvt_trans_log.h"

// Whether a failure of one of them is recorded in the log.
bool MayRecord(const Notifications& wanted);

// Runs them, in the order of their table. No lock may be held: a notification may run this program.
// A failure is recorded in the log where the row says so, and nowhere else; others are ignored.
void Notify(const Notifications& wanted, TransactionLog& log);
