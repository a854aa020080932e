// What the process takes over from its caller, and how it stands while it works: standard
// descriptors that exist, signals that do not interrupt a change, and both handed back to the
// commands that it starts.
#pragma once

// Prepares the process; called first in main. A closed standard descriptor is opened on /dev/null
// in the mode that its use fails in, so no product file becomes standard output and lost output is
// still seen as lost. SIGPIPE and SIGXFSZ are ignored, SIGCHLD is set to its default, and the
// termination signals are held back.
void PrepareProcess();

// SIGHUP, SIGINT, SIGQUIT and SIGTERM wait while product files change. They are let through, as
// the caller's own mask has it, while the run only reads the map or waits (for the lock, for its
// input, for whoever reads its output) and once the run is recorded.
void HoldTermination();
void AllowTermination();

// Holds termination back again when it goes out of scope.
class TerminationAllowed {
  public:
    TerminationAllowed() { AllowTermination(); }
    ~TerminationAllowed() { HoldTermination(); }
    TerminationAllowed(const TerminationAllowed&) = delete;
    TerminationAllowed& operator=(const TerminationAllowed&) = delete;
};

// Runs "command" through the shell and waits for it. It starts with the signal dispositions and
// the mask that this process was given, with standard input from /dev/null, and with no descriptor
// of this run. An interrupt from the terminal stops the command, not this process. Returns its wait
// status, or -1 when it could not be started, like system().
int RunShellCommand(const char* command);
