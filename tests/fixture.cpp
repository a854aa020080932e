#include "fixture.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

const std::string kKfxConfHeader =
    "# WARNING!!! This is a computer generated file. DO NOT EDIT.\n"
    "# Any manual changes will be lost when the file is regenerated.\n";

static std::string ReadFrom(int fd) {
    std::string text;
    std::array<char, 65536> buffer;
    for (ssize_t got = 0; (got = read(fd, buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<size_t>(got));
    }
    close(fd);
    return text;
}

Result Running::Wait() const {
    Result result;
    // Standard output ends up in a pipe that holds little, so it is read first; errors are short.
    result.out = ReadFrom(out);
    result.err = ReadFrom(err);
    int status = 0;
    waitpid(pid, &status, 0);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

Tree::Tree() {
    std::string name = (fs::temp_directory_path() / "tqs-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder for a test");
    }
    root_ = name;
    for (const char* folder : {"usr/opt/tqs/config", "usr/opt/tqs/events", "usr/opt/tqs/logs",
                               "usr/opt/tqs/bin", "etc/init.d", "tmp", "path"}) {
        fs::create_directories(Path(folder));
    }
    fs::create_symlink(TQSMGR_TEST, Path("path/tqsmgr"));
    WriteMap("");
    Write(kModels, "# known models\nServer|M100\nBig|X9\n");
    Write(kOsTypes, "Unknown|\nlinux|Linux servers\naix|AIX\n");
    Write(kEvents + "/basic", "");
    const std::array<std::array<std::string, 2>, 3> stubs = {{{kProduct + "bin/notifyweb", "web"},
                                                              {"etc/init.d/kfxd", "kfxd $1"},
                                                              {kProduct + "bin/notifylrp", "lrp"}}};
    for (const auto& [path, line] : stubs) {
        Write(path, "#!/bin/sh\necho " + line + " >> " + kCalls + "\n");
        fs::permissions(Path(path), fs::perms::owner_all);
    }
}

Tree::~Tree() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

Running Tree::Start(const std::vector<std::string>& words, const std::string& input,
                    const std::string& binary) const {
    std::vector<std::string> all = {"tqsmgr"};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char*> argv;
    for (std::string& word : all) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    const std::string program = binary.empty() ? TQSMGR_TEST : binary;
    // The input is a file, so that a run which does not read it cannot block this one.
    const int in = open(Path("stdin").c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
    if (write(in, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
        throw std::runtime_error("no input for a run");
    }
    lseek(in, 0, SEEK_SET);
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for a run");
    }
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(in, 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        close(in);
        if (chdir(root_.c_str()) == 0) {
            execv(program.c_str(), argv.data());
        }
        _exit(126);
    }
    close(in);
    close(out[1]);
    close(err[1]);
    return {pid, out[0], err[0]};
}

Result Tree::Run(const std::vector<std::string>& words, const std::string& input) const {
    return Start(words, input).Wait();
}

Result Tree::Shell(const std::string& command) const {
    const Running shell = Start({"-c", "PATH=path:$PATH\n" + command}, "", "/bin/sh");
    return shell.Wait();
}

std::string Tree::Read(const std::string& path) const {
    std::ifstream file(Path(path), std::ios::binary);
    if (!file) {
        return "(none)";
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

void Tree::Write(const std::string& path, const std::string& content) const {
    std::ofstream(Path(path), std::ios::binary | std::ios::trunc) << content;
}

void Tree::Remove(const std::string& path) const {
    fs::remove_all(Path(path));
}

bool Tree::Exists(const std::string& path) const {
    return fs::exists(fs::symlink_status(Path(path)));
}

void Tree::WriteMap(const std::string& inside, const std::string& attributes) const {
    Write(kMap, MapText(inside, attributes));
}

std::string MapText(const std::string& inside, const std::string& attributes) {
    const std::string start =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SystemMap " + attributes;
    return inside.empty() ? start + "/>\n" : start + ">\n" + inside + "</SystemMap>\n";
}

std::string Prop(int depth, const std::string& name, const std::string& value) {
    return std::string(static_cast<size_t>(depth), ' ') + "<Property name=\"" + name +
           "\" readonly=\"false\" value=\"" + value + "\"/>\n";
}
