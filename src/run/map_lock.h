// The lock that makes runs follow one another: held from before the map is read until the map,
// kfx.conf and the log entry are written. While it is held, the lock file holds the process id.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "base/files.h"
#include "base/outcome.h"

class MapLock {
  public:
    static constexpr const char* kIsHeld = "locked";

    // Waits for the lock, at most "wait" where that is given, and takes it. "map" is the path of
    // the map, which the lock file must not be under a second name. Creates the lock file where it
    // is missing and never deletes it. kLockFailed "Cannot open lock file \"%s\"." or "Cannot write
    // pid to lock file \"%s\"." or the system's text or, when the time is over, kIsHeld;
    // kWriteFailed with the system's text when a new lock file cannot be given its group or mode.
    Outcome Lock(const std::string& map, std::optional<std::chrono::seconds> wait = {});

    // To be called just before the run first changes the map, kfx.conf or a -config file, and
    // harmless after that. Termination signals wait from here on. kLockFailed "Lock file \"%s\" was
    // removed or replaced." when the lock protects nothing any more: another run may have changed
    // the map.
    Outcome BeginChange();

    // Empties the lock file and releases the lock; nothing when it is not held. kUnlockFailed with
    // the system's text; the lock is then still held.
    Outcome Unlock();

  private:
    Outcome Take(const std::string& map, const Deadline& deadline);

    FileDescriptor file_;  // open while the lock is held
    bool is_changing_ = false;
};
