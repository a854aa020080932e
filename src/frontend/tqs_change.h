// Many changes as one: tqs apply and tqs sync.
#pragma once

#include <string>

#include "base/outcome.h"
#include "run/run.h"

// Both change the map that the options name, or try it and print what would differ, and tell on
// standard error of all that is wrong or refused. They return the exit status; a failure without a
// message has been told. They fail as Run::OpenMap and Run::Apply, and with kWriteFailed for output
// that is lost.

// Runs the change script "path", a file or "-" for standard input. With "keeps_going" the exit
// status is that of the first refused command. kCannotOpen for a script that cannot be read,
// kInvalidArgument for one with wrong lines.
Result<int> ApplyScript(const std::string& path, ScriptOptions options);

// Makes the map what the inventory "path" says, a file as above; with "keep" what that does not
// name stays. Where nothing is to be done, nothing is written and nobody notified. Fails also as
// ReadSource, and with the code of what stands in the way, kIncompleteMap where no command helps.
Result<int> SyncInventory(const std::string& path, bool keep, ScriptOptions options);
