#include "base/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

static constexpr std::array kTermination = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

// A disposition that this process changes, and what its caller had set.
struct Disposition {
    int signal;
    void (*ours)(int);
    struct sigaction given;
};

// What the caller has set.
static struct {
    std::array<Disposition, 3> dispositions = {
        {{SIGPIPE, SIG_IGN, {}}, {SIGXFSZ, SIG_IGN, {}}, {SIGCHLD, SIG_DFL, {}}}};
    sigset_t mask = {};
} given;

static struct sigaction Plain(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    return action;
}

static void OpenStandardDescriptors() {
    static constexpr std::array kModes = {O_WRONLY, O_RDONLY, O_RDONLY};
    for (size_t fd = 0; fd < kModes.size(); ++fd) {
        if (fcntl(static_cast<int>(fd), F_GETFD) < 0 && errno == EBADF) {
            // The lowest free descriptor is this one, since those below it are open by now.
            static_cast<void>(open("/dev/null", kModes.at(fd)));
        }
    }
}

void PrepareProcess() {
    OpenStandardDescriptors();
    for (Disposition& d : given.dispositions) {
        const struct sigaction ours = Plain(d.ours);
        sigaction(d.signal, &ours, &d.given);
    }
    sigprocmask(SIG_BLOCK, nullptr, &given.mask);
}

// Blocks the termination signals and returns the mask that was in force.
static sigset_t BlockTermination() {
    sigset_t held;
    sigset_t before;
    sigemptyset(&held);
    for (const int signal : kTermination) {
        sigaddset(&held, signal);
    }
    sigprocmask(SIG_BLOCK, &held, &before);
    return before;
}

void HoldTermination() {
    static_cast<void>(BlockTermination());
}

void AllowTermination() {
    sigprocmask(SIG_SETMASK, &given.mask, nullptr);
}

bool IsTerminationPending() {
    sigset_t pending;
    sigpending(&pending);
    return std::ranges::any_of(
        kTermination, [&pending](int signal) { return sigismember(&pending, signal) == 1; });
}

[[noreturn]] static void BecomeShell(const char* command) {
    for (const Disposition& d : given.dispositions) {
        sigaction(d.signal, &d.given, nullptr);
    }
    sigprocmask(SIG_SETMASK, &given.mask, nullptr);
    const int null_input = open("/dev/null", O_RDONLY);
    if (null_input > STDIN_FILENO) {
        dup2(null_input, STDIN_FILENO);
        close(null_input);
    }
    execl("/bin/sh", "sh", "-c", command, static_cast<char*>(nullptr));
    _exit(127);
}

int RunShellCommand(const char* command) {
    // The child must see the dispositions as given, so they change here only once it runs; until
    // then an interrupt waits. It makes nothing but system calls, so it may run in this process's
    // memory: a copy of a large map's would cost more than the shell.
    const sigset_t mask = BlockTermination();
    const pid_t child = vfork();
    if (child == 0) {
        BecomeShell(command);
    }
    const struct sigaction ignored = Plain(SIG_IGN);
    struct sigaction interrupt {};
    struct sigaction quit {};
    sigaction(SIGINT, &ignored, &interrupt);
    sigaction(SIGQUIT, &ignored, &quit);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    int status = -1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    static_cast<void>(BlockTermination());
    sigaction(SIGINT, &interrupt, nullptr);
    sigaction(SIGQUIT, &quit, nullptr);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    return status;
}
