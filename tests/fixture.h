// A private tree for one test, and runs of the program in it.
//
//     Tree tree;
//     RunResult r = tree.Run({"-security", "true"});
//     EXPECT_EQ(r.code, 0);
//     EXPECT_EQ(tree.Read(kMap), ...);
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

inline const std::string kProduct = "usr/opt/tqs/";
inline const std::string kMap = kProduct + "config/SystemMap.xml";
inline const std::string kLock = kProduct + "config/SystemMap.lock";
inline const std::string kKfxConf = kProduct + "config/kfx.conf";
inline const std::string kModels = kProduct + "config/models";
inline const std::string kOsTypes = kProduct + "config/ostypes";
inline const std::string kEvents = kProduct + "events";
inline const std::string kLog = kProduct + "logs/tqsmgr.log";
// Where the stub notifications note that they were called, a line each: web, kfxd update, lrp.
inline const std::string kCalls = "calls";

// How a run ended and what it printed. "signal" is 0 unless a signal ended it.
struct RunResult {
    int code = -1;
    int signal = 0;
    std::string out;
    std::string err;
};

// A started run that has not been waited for.
struct Running {
    int pid = -1;
    int out = -1;
    int err = -1;
    std::string command;
    // Throws when the run hangs: it is then ended, with all that it has started.
    RunResult Wait() const;
};

// A map as the program writes it: declaration, root element with "attributes", "inside" between its
// tags (which ends in a newline unless empty; then the root is an empty element).
std::string MapText(const std::string& inside, const std::string& attributes);

// A group that files may be given to: one that root is not in, or the last of another user's.
std::string OtherGroup();

// A folder with an installed product: an empty map (serial 1, security false, version 3.0), models
// ("Server|M100", "Big|X9"), OS types (Unknown, linux, aix), one event file "basic", and stub
// notifications. Removed when it goes out of scope.
class Tree {
  public:
    Tree();
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    // Runs the program, invoked as "tqsmgr", with these words in this folder.
    [[nodiscard]] RunResult Run(const std::vector<std::string>& words,
                                const std::string& input = "") const {
        return Start(words, input).Wait();
    }
    // Starts it and returns at once. "binary" is another program of the tests.
    [[nodiscard]] Running Start(const std::vector<std::string>& words,
                                const std::string& input = "",
                                const std::string& binary = TQSMGR_TEST) const;
    // Runs a shell command in the folder, with the programs "tqsmgr" and "tqs" in the search path
    // and the paths of map, lock, kfx.conf and log as M, L, K and LOG, another group as G, and the
    // functions of waits.sh.
    [[nodiscard]] RunResult Shell(const std::string& command, const std::string& input = "") const;

    // The content of a file; "(none)" when there is no such file.
    [[nodiscard]] std::string Read(const std::string& path) const;
    void Write(const std::string& path, const std::string& content) const;
    void Remove(const std::string& path) const { std::filesystem::remove_all(Path(path)); }
    [[nodiscard]] bool Exists(const std::string& path) const;
    [[nodiscard]] std::string Path(const std::string& path) const { return root_ + "/" + path; }
    // The content of each file but the log, the lock file and the temporary map.
    [[nodiscard]] std::map<std::string, std::string> Files() const;
    // The map holds these lines below the root's start tag, which has these attributes.
    void WriteMap(
        const std::string& inside,
        const std::string& attributes = R"(serial="1" security="false" version="3.0")") const {
        Write(kMap, MapText(inside, attributes));
    }

  private:
    std::string root_;
};
