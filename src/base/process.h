// What the process takes over from its caller, and how it stands while it works: standard
// descriptors that exist, signals that do not interrupt a change, and both handed back to the
// commands that it starts.
#pragma once

// Prepares the process; called first in main. A closed standard descriptor is opened on /dev/null
// in the mode that its use fails in, so no product file becomes standard output and lost output is
// still seen as lost. SIGPIPE and SIGXFSZ are ignored, and SIGCHLD is set to its default.
void PrepareProcess();

// SIGHUP, SIGINT, SIGQUIT and SIGTERM wait, from before the first change of a product file until
// the run is recorded. What came meanwhile arrives when they are let through again, as the caller's
// own mask has it; before and after, a run can be ended at any moment.
void HoldTermination();
void AllowTermination();
// Whether one of them waits.
bool IsTerminationPending();

// Runs "command" through the shell and waits for it. It starts with the signal dispositions, the
// mask of signals and the umask that this process was given, with standard input from /dev/null,
// and with no descriptor of this run. An interrupt from the terminal stops the command, not this
// process. Returns its wait status, or -1 when it could not be started, like system().
int RunShellCommand(const char* command);
