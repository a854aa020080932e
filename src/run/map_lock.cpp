#include "run/map_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <string>

#include "base/calls.h"
#include "base/paths.h"
#include "base/process.h"
#include "run/lock_holder.h"

namespace {

// A time to wait that ends, or does not.
class Wait {
  public:
    explicit Wait(std::optional<unsigned> seconds) : seconds_(seconds), start_(Clock::now()) {}

    [[nodiscard]] bool IsEndless() const { return !seconds_; }
    [[nodiscard]] bool IsOver() const {
        return seconds_ && Clock::now() - start_ >= std::chrono::seconds(*seconds_);
    }

  private:
    using Clock = std::chrono::steady_clock;
    std::optional<unsigned> seconds_;
    Clock::time_point start_;
};

}  // namespace

// False, with errno, when the system refuses the lock, or, with EWOULDBLOCK, when the time is over.
static bool WaitForLock(int fd, const Wait& wait) {
    static constexpr struct timespec kPause = {0, 20'000'000};
    const int operation = LOCK_EX | (wait.IsEndless() ? 0 : LOCK_NB);
    while (calls::Flock(fd, operation) != 0) {
        if (errno == EWOULDBLOCK && !wait.IsOver()) {
            nanosleep(&kPause, nullptr);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// Takes the lock on the file that bears the lock file's name once the lock is held: a file that
// was replaced while the run waited protects nothing.
Outcome MapLock::Take(std::optional<unsigned> seconds) {
    const Wait wait(seconds);
    for (;;) {
        OpenedFile opened = OpenOrCreate(paths::kLockFile, O_WRONLY, 0660);
        if (!opened.fd.IsOpen()) {
            return Failure(ExitCode::kLockFailed, "Cannot open lock file \"%s\".",
                           paths::kLockFile);
        }
        if (!opened.given.ok()) {
            return opened.given;
        }
        if (!WaitForLock(opened.fd.get(), wait)) {
            return errno == EWOULDBLOCK && !wait.IsEndless()
                       ? Outcome(ExitCode::kLockFailed, DescribeHolder())
                       : SystemFailure(ExitCode::kLockFailed);
        }
        if (IsSameFile(opened.fd.get(), paths::kLockFile)) {
            file_ = std::move(opened.fd);
            return {};
        }
    }
}

Outcome MapLock::Lock(std::optional<unsigned> seconds) {
    if (Outcome outcome = Take(seconds); !outcome.ok()) {
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
