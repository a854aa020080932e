#include "fixture.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

using Clock = std::chrono::steady_clock;

// A run that takes longer than this hangs.
static constexpr std::chrono::seconds kLongestRun(90);

// Appends what comes until all writers have closed it. False when they have not by "end".
static bool ReadFrom(int fd, Clock::time_point end, std::string& text) {
    struct pollfd waited = {fd, POLLIN, 0};
    std::array<char, 65536> some{};
    ssize_t got = 1;
    for (bool is_over = false; got > 0 && !is_over;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        is_over = left <= 0;
        if (poll(&waited, 1, static_cast<int>(std::max<int64_t>(left, 0))) <= 0) {
            break;
        }
        got = read(fd, some.data(), some.size());
        text.append(some.data(), static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    close(fd);
    return got <= 0;
}

RunResult Running::Wait() const {
    // Standard output ends up in a pipe that holds little, so it is read first; errors are short.
    RunResult result;
    const auto end = Clock::now() + kLongestRun;
    const bool is_out_closed = ReadFrom(out, end, result.out);
    if (!ReadFrom(err, end, result.err) || !is_out_closed) {
        kill(-pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        throw std::runtime_error("has not ended in 90 s: " + command + "\n" + result.out +
                                 result.err);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

std::string OtherGroup() {
    std::array<gid_t, 1024> groups{};
    const int count = getgroups(static_cast<int>(groups.size()), groups.data());
    return std::to_string(geteuid() == 0 ? 12
                          : count > 0    ? groups.at(static_cast<size_t>(count) - 1)
                                         : getegid());
}

Tree::Tree() {
    root_ = (fs::temp_directory_path() / "tqs-test-XXXXXX").string();
    if (mkdtemp(root_.data()) == nullptr) {
        throw std::runtime_error("no folder for a test");
    }
    for (const char* folder : {"config", "events", "logs", "bin"}) {
        fs::create_directories(Path(kProduct + folder));
    }
    for (const char* folder : {"etc/init.d", "tmp", "path"}) {
        fs::create_directories(Path(folder));
    }
    fs::create_symlink(TQSMGR_TEST, Path("path/tqsmgr"));
    fs::create_symlink(TQS_TEST, Path("path/tqs"));
    fs::create_symlink(TQS_CASES "/../waits.sh", Path("path/waits.sh"));
    WriteMap("");
    Write(kModels, "# known models\nServer|M100\nBig|X9\n");
    Write(kOsTypes, "Unknown|\nlinux|Linux servers\naix|AIX\n");
    Write(kEvents + "/basic", "");
    const auto stub = [this](const std::string& path, const std::string& line) {
        Write(path, "#!/bin/sh\necho " + line + " >> " + kCalls + "\n");
        fs::permissions(Path(path), fs::perms::owner_all);
    };
    stub(kProduct + "bin/notifyweb", "web");
    stub(kProduct + "bin/notifylrp", "lrp");
    stub("etc/init.d/kfxd", "kfxd $1");
}

Tree::~Tree() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

Running Tree::Start(const std::vector<std::string>& words, const std::string& input,
                    const std::string& binary) const {
    std::vector<char*> argv = {const_cast<char*>("tqsmgr")};
    for (const std::string& word : words) {
        argv.push_back(const_cast<char*>(word.c_str()));
    }
    argv.push_back(nullptr);
    // The input is a file, so that a run which does not read it cannot block this one.
    Write("stdin", input);
    const int in = open(Path("stdin").c_str(), O_RDONLY | O_CLOEXEC);
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (in < 0 || pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no files for a run");
    }
    const pid_t pid = fork();
    if (pid == 0) {
        // A group of its own, so that all of it can be ended.
        const bool is_set = setpgid(0, 0) == 0 && dup2(in, 0) == 0 && dup2(out[1], 1) == 1 &&
                            dup2(err[1], 2) == 2 && chdir(root_.c_str()) == 0;
        _exit(is_set ? execv(binary.c_str(), argv.data()) : 126);
    }
    for (const int fd : {in, out[1], err[1]}) {
        close(fd);
    }
    std::string command;
    for (const std::string& word : words) {
        command += word + " ";
    }
    return {pid, out[0], err[0], command};
}

RunResult Tree::Shell(const std::string& command, const std::string& input) const {
    const std::string names = "PATH=path:$PATH M=" + kMap + " L=" + kLock + " K=" + kKfxConf +
                              " LOG=" + kLog + " C=usr/opt/tqs/config G=" + OtherGroup() +
                              "\n. path/waits.sh\n";
    return Start({"-c", names + command}, input, "/bin/sh").Wait();
}

std::string Tree::Read(const std::string& path) const {
    if (!fs::is_regular_file(Path(path))) {
        return "(none)";
    }
    std::ifstream file(Path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Tree::Write(const std::string& path, const std::string& content) const {
    std::ofstream(Path(path), std::ios::binary | std::ios::trunc) << content;
}

bool Tree::Exists(const std::string& path) const {
    return fs::exists(fs::symlink_status(Path(path)));
}

std::map<std::string, std::string> Tree::Files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
        const std::string path = entry.path().lexically_relative(root_);
        files[path] = entry.is_symlink() ? "" : Read(path);
    }
    for (const std::string& path : {kLog, kLock, kMap + ".tmp", std::string("stdin")}) {
        files.erase(path);
    }
    return files;
}

std::string MapText(const std::string& inside, const std::string& attributes) {
    const std::string start =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SystemMap " + attributes;
    return inside.empty() ? start + "/>\n" : start + ">\n" + inside + "</SystemMap>\n";
}
