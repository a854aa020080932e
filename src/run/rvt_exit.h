// How a run ends, whatever happened.
#pragma once

#include <string>

#include "base/exit_code.h"

// Base name of the program as it was invoked: the start of every error line.
extern std::string program;

// The only way out of a run. Records the code in the log, releases the lock, prints what the run
// has to say on standard error, for a code other than 0 "program: message" as its last line unless
// rvt_err_msg is empty, and ends the process with the code. The log comes before the lock, so that
// entries stand in the order of the runs; what is printed comes last, so that it holds up no other.
[[noreturn]] void RVTExit(ExitCode code);
