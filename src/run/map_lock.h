// The lock that makes runs follow one another: held from before the map is read until the map,
// kfx.conf and the log entry are written. While it is held, the lock file holds the process id.
#pragma once

#include "base/exit_code.h"

// Waits for the lock and takes it; a termination signal is let through while it waits. Creates the
// lock file where it is missing and never deletes it. kLockFailed "Cannot open lock file
// \"%s\"." or "Cannot write pid to lock file \"%s\"." or the system's text; kWriteFailed with the
// system's text when a new lock file cannot be given its group or mode.
ExitCode Lock();

// Empties the lock file and releases the lock; nothing when it is not held. kUnlockFailed with the
// system's text; the lock is then still held.
ExitCode Unlock();
