#include "run/map_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/calls.h"
#include "base/error.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/process.h"

// Open while this run holds the lock.
static FileDescriptor lock_fd;

// Whether this run has begun to change files.
static bool is_changing = false;

static ExitCode OpenLockFile(FileDescriptor& file) {
    OpenedFile opened = OpenOrCreate(paths::kLockFile, O_WRONLY, 0660);
    if (!opened.fd.IsOpen()) {
        return Fail(ExitCode::kLockFailed, "Cannot open lock file \"%s\".", paths::kLockFile);
    }
    file = std::move(opened.fd);
    return opened.given;
}

static bool WaitForLock(int fd) {
    int result = 0;
    do {
        result = calls::Flock(fd, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

// Takes the lock on the file that bears the lock file's name once the lock is held: a file that
// was replaced while the run waited protects nothing.
static ExitCode TakeLock() {
    for (;;) {
        FileDescriptor file;
        if (const ExitCode code = OpenLockFile(file); code != ExitCode::kOk) {
            return code;
        }
        if (!WaitForLock(file.get())) {
            return FailWithErrno(ExitCode::kLockFailed);
        }
        if (IsSameFile(file.get(), paths::kLockFile)) {
            lock_fd = std::move(file);
            return ExitCode::kOk;
        }
    }
}

ExitCode Lock() {
    if (const ExitCode code = TakeLock(); code != ExitCode::kOk) {
        return code;
    }
    // What a run that was killed has left.
    static_cast<void>(calls::Ftruncate(lock_fd.get(), 0));
    if (!WriteAll(lock_fd.get(), std::to_string(getpid()))) {
        return Fail(ExitCode::kLockFailed, "Cannot write pid to lock file \"%s\".",
                    paths::kLockFile);
    }
    return ExitCode::kOk;
}

ExitCode BeginChange() {
    if (is_changing) {
        return ExitCode::kOk;
    }
    HoldTermination();
    if (!IsSameFile(lock_fd.get(), paths::kLockFile)) {
        return Fail(ExitCode::kLockFailed, "Lock file \"%s\" was removed or replaced.",
                    paths::kLockFile);
    }
    is_changing = true;
    return ExitCode::kOk;
}

ExitCode Unlock() {
    if (!lock_fd.IsOpen()) {
        return ExitCode::kOk;
    }
    static_cast<void>(calls::Ftruncate(lock_fd.get(), 0));
    if (calls::Flock(lock_fd.get(), LOCK_UN) != 0) {
        return FailWithErrno(ExitCode::kUnlockFailed);
    }
    static_cast<void>(lock_fd.Close());
    return ExitCode::kOk;
}
