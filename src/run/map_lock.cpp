#include "run/map_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/calls.h"
#include "base/paths.h"
#include "base/process.h"

// Takes the lock on the file that bears the lock file's name once the lock is held: a file that
// was replaced while the run waited protects nothing.
Outcome MapLock::Take(const std::string& map, const Deadline& deadline) {
    do {
        OpenedFile opened = OpenOrCreate(paths::kLockFile, O_WRONLY, 0660, map);
        if (!opened.fd.IsOpen()) {
            return Failure(ExitCode::kLockFailed, "Cannot open lock file \"%s\".",
                           paths::kLockFile);
        }
        if (!opened.given.ok()) {
            return opened.given;
        }
        if (!LockFile(opened.fd.get(), deadline)) {
            if (errno != EWOULDBLOCK) {
                return SystemFailure(ExitCode::kLockFailed);
            }
        } else if (IsSameFile(opened.fd.get(), paths::kLockFile)) {
            file_ = std::move(opened.fd);
            return {};
        }
    } while (!IsOver(deadline));
    return {ExitCode::kLockFailed, kIsHeld};
}

Outcome MapLock::Lock(const std::string& map, std::optional<std::chrono::seconds> wait) {
    if (Outcome outcome = Take(map, DeadlineIn(wait)); !outcome.ok()) {
        return outcome;
    }
    // What a run that was killed has left.
    static_cast<void>(calls::Ftruncate(file_.get(), 0));
    return WriteAll(file_.get(), std::to_string(getpid()))
               ? Outcome()
               : Failure(ExitCode::kLockFailed, "Cannot write pid to lock file \"%s\".",
                         paths::kLockFile);
}

Outcome MapLock::BeginChange() {
    if (is_changing_) {
        return {};
    }
    HoldTermination();
    if (!IsSameFile(file_.get(), paths::kLockFile)) {
        return Failure(ExitCode::kLockFailed, "Lock file \"%s\" was removed or replaced.",
                       paths::kLockFile);
    }
    is_changing_ = true;
    return {};
}

Outcome MapLock::Unlock() {
    if (!file_.IsOpen()) {
        return {};
    }
    static_cast<void>(calls::Ftruncate(file_.get(), 0));
    if (calls::Flock(file_.get(), LOCK_UN) != 0) {
        return SystemFailure(ExitCode::kUnlockFailed);
    }
    static_cast<void>(file_.Close());
    return {};
}
