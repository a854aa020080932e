// The transaction log: every run leaves one entry, and the log as a whole is a shell script that
// repeats the runs. An entry is made in memory and appended in one piece when the run's exit code
// is known, so entries never mix, and they stand in the order in which the runs took effect.
//
//     ##########################################################################
//     # Time: 11/16/2026 19:00:05
//     ##########################################################################
//
//     /usr/opt/tqs/bin/tqsmgr -remove platform -name "lab1"
//
//     echo "Recorded Exit Code = 1, This Exit Code = $?"
//
//     # EXIT CODE: 1
//     # ERROR MESSAGE:
//     #   Platform "lab1" not found.
//
// (the command ends with a blank; after exit code 0 an empty line takes the place of the error
// block). Captured standard input follows the command as a here-document, "... <<EOF". A failed web
// notification puts its error block before the echo line. A log of more than 1 MiB is moved to
// tqsmgr.log.old when a run begins.
//
// While no log is open, LogStdIn, PutMsg and PutExitCode do nothing.
#pragma once

#include <cstddef>
#include <string_view>

#include "base/exit_code.h"

// Opens the log, rotating or creating it where due, begins the entry with the time and the words
// of "argv" (argv[0] included), and reserves room on the disk for the largest entry that the run
// can make, so that a run that cannot be recorded changes nothing. Called once, first in a run.
// kCannotOpen "Cannot open %s"; kWriteFailed with the system's text when a new log cannot be given
// its group or mode, or "Write failed for %s" when there is no room.
ExitCode LogCommandLine(int argc, char** argv);

// Adds "input", the standard input that the run has captured, to the command as a here-document.
// kWriteFailed "Write failed for %s" when there is no room for it.
ExitCode LogStdIn(std::string_view input);

// Adds an error block with "message" to the entry. If the entry stands in the log already, it is
// put into it there.
void PutMsg(const char* message);

// Ends the entry with "code" (and rvt_err_msg, unless the code is 0) and appends it to the log. If
// it stands there already, its end is replaced. kWriteFailed "Write failed for %s"; the log is then
// as it was.
ExitCode PutExitCode(ExitCode code);

// Fills "buffer" of "size" bytes with the local time as "11/16/2026 19:00:05" and returns the
// length written, 0 when it does not fit.
size_t GetTimeStamp(char* buffer, size_t size);
