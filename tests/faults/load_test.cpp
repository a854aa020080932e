// Many runs at once, and what runs that were killed leave behind.
#include "load.h"

#include <unistd.h>

#include <set>

// What stands behind "before", up to the next quote, wherever that occurs in the map.
static std::multiset<std::string> Values(const std::string& map, const std::string& before) {
    std::multiset<std::string> values;
    for (size_t at = 0; (at = map.find(before, at)) != std::string::npos;) {
        at += before.size();
        values.insert(map.substr(at, map.find('"', at) - at));
    }
    return values;
}

// Of five runs one adds a platform by a name that another run wants too, one removes a platform,
// one updates one, one adds one by a name of its own, and one looks at all.
TEST(Load, LosesNothing) {
    constexpr int kRuns = 200;
    std::string platforms;
    std::vector<std::string> lines;
    std::set<std::string> names;
    for (int i = 0; i < kRuns; ++i) {
        const std::string n = std::to_string(i);
        platforms += PlatformText("ID=" + std::to_string(1000 + i) + ";Name=old" + n +
                                  ";Port Number=1;Address=10.2.0." + n);
        const std::string two = "two" + std::to_string(i / 10);
        const std::string added = " -model M100 -port 1 -addr 10.1.0." + n;
        lines.push_back(i % 5 == 0   ? "-add platform -name " + two + added
                        : i % 5 == 1 ? "-remove platform -name old" + n
                        : i % 5 == 2 ? "-update platform -name old" + n + " -comment by" + n
                        : i % 5 == 3 ? "-add platform -name new" + n + added
                                     : "-view kfxconf");
        names.insert({two, i % 5 == 1 ? two : "old" + n, i % 5 == 3 ? "new" + n : two});
    }
    const std::string start = MapText(platforms, R"(serial="1" security="false" version="3.0")");
    const Tree tree;
    tree.Remove(kProduct + "bin");
    tree.Write(kMap, start);
    // So near to the size at which the log is rotated that the first runs fill it.
    constexpr size_t kFull = 1U << 20U;
    tree.Write(kLog, std::string(kFull - 5000, '-') + "\n");
    std::multiset<int> codes;
    std::vector<Running> runs;
    runs.reserve(kRuns);
    for (const std::string& line : lines) {
        while (runs.size() == kRuns / 2 && !tree.Exists(kOldLog) &&
               fs::file_size(tree.Path(kLog)) <= kFull) {
            usleep(1000);
        }
        runs.push_back(tree.Start(Words("-nonotify web -nonotify kfxd " + line)));
    }
    for (const Running& run : runs) {
        codes.insert(run.Wait().code);
    }
    EXPECT_EQ(codes.count(5), kRuns / 10U) << "each name that was wanted twice is refused once";
    EXPECT_EQ(codes.count(0), kRuns - kRuns / 10U);
    const std::string map = tree.Read(kMap);
    EXPECT_EQ(Values(map, R"("Name" readonly="false" value=")"),
              std::multiset<std::string>(names.begin(), names.end()));
    EXPECT_EQ(Values(map, "value=\"by").size(), kRuns / 5U);
    const auto ids = Values(map, "<Platform ID=\"");
    EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), names.size());

    ASSERT_TRUE(tree.Exists(kOldLog));
    const std::string log = tree.Read(kOldLog) + tree.Read(kLog);
    const std::vector<int> logged = LoggedCodes(log);
    EXPECT_EQ(std::multiset<int>(logged.begin(), logged.end()), codes);

    // The log, fed to a shell where all began, comes to the same codes and the same map.
    const Tree again;
    again.Remove(kProduct + "bin");
    again.Write(kMap, start);
    again.Write("replay", log.substr(log.find('#')));
    const std::string line = "Recorded Exit Code = \\(.*\\), This Exit Code = \\1";
    EXPECT_EQ(again.Shell("sh replay | grep -c '^" + line + "$'").out,
              std::to_string(kRuns) + "\n");
    EXPECT_EQ(again.Read(kMap), map);
}

// A lock file with the number of a process that is gone, and something under the name of the
// temporary map.
TEST(Leftovers, DoNoHarm) {
    const std::string temporary = kMap + ".tmp";
    for (const std::string command : {"echo longer than the map >$T", "ln -s $PWD/target $T",
                                      "ln -s $PWD/nothing $T", "ln target $T", "mkfifo $T"}) {
        SCOPED_TRACE(command);
        const Tree tree;
        tree.Write("target", "untouched");
        tree.Write(kLock, "99999999 and more");
        EXPECT_EQ(tree.Shell("T=" + temporary + "; " + command + "; tqsmgr -security true").code,
                  0);
        EXPECT_EQ(tree.Read(kMap), MapText("", R"(serial="1" security="true" version="3.0")"));
        EXPECT_EQ(tree.Shell("cat target " + kLock + "; stat -c %F $(readlink -f " + kMap +
                             ")\nls nothing " + temporary)
                      .out,
                  "untouched"
                  "regular file\n");
    }
    // A folder cannot be moved out of the way.
    const Tree tree;
    fs::create_directory(tree.Path(temporary));
    ExpectRuns(tree, "tqsmgr", {{"-security true", 40, "Cannot open \"" + temporary + "\"."}});
}
