// How a run ends, whatever happened.
#pragma once

#include <string>

#include "base/exit_code.h"

// Base name of the program as it was invoked: the start of every error line.
extern std::string program;

// The only way out of a run. For a code other than 0, prints "program: message" on standard error
// unless rvt_err_msg is empty. Records the code in the log, releases the lock and ends the process
// with the code. The log comes before the lock, so that entries stand in the order of the runs.
[[noreturn]] void RVTExit(ExitCode code);
