// Telling other components of a change, by fixed shell commands.
#pragma once

#include "commands/actions.h"
#include "translog/rvt_trans_log.h"

// Runs the notifications that a change asks for and the command has left on. No lock may be held: a
// notification may run this program. One of the web that fails is recorded in the log, and nowhere
// else; the others' status is ignored.
void Notify(const Command& command, TransactionLog& log);
