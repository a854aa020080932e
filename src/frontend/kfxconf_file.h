// kfx.conf as a file. It is written in place, since the console daemon knows it by its name; the
// lines are made elsewhere.
#pragma once

#include <string>

#include "base/exit_code.h"

// Writes kfx.conf anew: two comment lines that warn against editing it, then the lines of every
// platform and console. kCannotOpen "Cannot open \"%s\"."; kWriteFailed with the system's text when
// a new file cannot be given its group or mode, or "Write failed for \"%s\"." when its text cannot
// be written; kIncompleteMap from the lines, those before the incomplete element then stand in it;
// kLockFailed as BeginChange.
ExitCode CreateKfxConfFile();

// Makes the text of the lines, without the comment: all, or those of the name that the command line
// gives. kIncompleteMap as above, "lines" then has those before; kLookupFailed "Console \"%s\" not
// found." when nothing has the name.
ExitCode ViewKfxConfLines(std::string& lines);
