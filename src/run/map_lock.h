// The lock that makes runs follow one another: held from before the map is read until the map,
// kfx.conf and the log entry are written. While it is held, the lock file holds the process id.
#pragma once

#include <optional>

#include "base/files.h"
#include "base/outcome.h"

class MapLock {
  public:
    // Waits for the lock, at most "seconds" where that is given, and takes it. Creates the lock
    // file where it is missing and never deletes it. kLockFailed "Cannot open lock file \"%s\"." or
    // "Cannot write pid to lock file \"%s\"." or the system's text or, when the time is over, as
    // DescribeHolder; kWriteFailed with the system's text when a new lock file cannot be given its
    // group or mode.
    Outcome Lock(std::optional<unsigned> seconds = {});

    // To be called just before the run first changes the map, kfx.conf or a -config file, and
    // harmless after that. Termination signals wait from here on. kLockFailed "Lock file \"%s\" was
    // removed or replaced." when the lock protects nothing any more: another run may have changed
    // the map.
    Outcome BeginChange();

    // Empties the lock file and releases the lock; nothing when it is not held. kUnlockFailed with
    // the system's text; the lock is then still held.
    Outcome Unlock();

  private:
    Outcome Take(std::optional<unsigned> seconds);

    FileDescriptor file_;  // open while the lock is held
    bool is_changing_ = false;
};
