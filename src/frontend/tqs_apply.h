// tqs apply: many changes as one.
#pragma once

#include <string>

#include "base/outcome.h"
#include "run/run.h"

// Runs the change script "path", a file or "-" for standard input, or tries it and prints what
// would differ. Each wrong line and each refused command is named on standard error. Returns the
// exit status, with "keeps_going" that of the first refused command; fails with kCannotOpen for a
// script that cannot be read, kInvalidArgument without a message for one with wrong lines, as the
// refused command without a message, as Run::Apply, or with kWriteFailed for output that is lost.
Result<int> ApplyScript(const std::string& path, ScriptOptions options);
