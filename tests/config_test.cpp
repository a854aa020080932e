// One variable of a daemon's configuration file, set and read.
#include <filesystem>

#include "sample_map.h"

namespace {

// clang-format off
TEST(Config, SetsAndGets) {
    const std::string none = "(none)", format = "tqsmgr: Invalid format specified. Must be of the format: variable=value\n";
    const std::string zeros("x\0y\na=\0 1\n\0a=3\n", 15), x(20000, 'x');
    // "a=1" where a reader of 8192-byte pieces would see it at the beginning of one.
    const std::string hidden = "b=" + std::string(8189, 'x') + "a=1\n";
    // What follows -config, the file before and after (empty: as before), and what is printed: with a code, the error.
    const struct { int code; std::string name, option, argument, before, after, printed; } rows[] = {
        {0, "d", "-set", "a=1", none, "a=1\n", ""}, {0, "d", "-set", "", none, "\n", ""},
        {0, "d", "-set", "a=2", "a=1\n#a=1\n a=1\nA=1\nab=1\na=3\n", "a=2\n#a=1\n a=1\nA=1\nab=1\na=2\n", ""},
        {0, "d", "-set", "a=2", "b=3\na=1\r", "b=3\na=2\n", ""}, {0, "d", "-set", "==a=b=c", "a=1\n", "==a=b=c\n", ""},
        {0, "d", "-set", "a=2", zeros, std::string("x\0y\na=2\n\0a=3\n", 13), ""},
        {0, "d", "-set", "a= $(x) \"", hidden + "a=" + x + "\nb=1\n", hidden + "a= $(x) \"\nb=1\n", ""},
        {0, "d", "-set", "a=" + x, "b=1\na=1\n", "b=1\na=" + x + "\n", ""},
        {0, "d", "-get", "a", "#a=0\nab=1\na=2 \na=3\n", "", "2 \n"}, {0, "d", "-get", "", "ab=1\n=x\n", "", "x\n"},
        {0, "d", "-get", "a", std::string("\0\na==\0002", 7), "", std::string("=\0002", 3)},
        {0, "d", "-get", "a", hidden + "a=" + x + "\n", "", x + "\n"}, {11, "d", "-set", "", "a=1\n", "", format},
        {11, "d", "-set", "==", "a=1\n", "", format}, {40, "d", "-get", "a", none, "", "tqsmgr: Cannot open \"d\".\n"},
        {40, "tmp", "-set", "a=1", none, "", "tqsmgr: Cannot open \"tmp\".\n"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.option + " " + row.argument.substr(0, 40) + " in " + row.before.substr(0, 40));
        const Tree tree;
        if (row.before != none) {
            tree.Write("d", row.before);
        }
        const RunResult r = tree.Run({"-config", row.name, row.option, row.argument});
        EXPECT_EQ(r.code, row.code);
        EXPECT_EQ(r.code == 0 ? r.out : r.err, row.printed);
        EXPECT_EQ(tree.Read("d"), row.after.empty() ? row.before : row.after);
        EXPECT_EQ(tree.Read(kCalls), row.after.empty() ? "(none)" : "kfxd update\nlrp\n");
        EXPECT_TRUE(std::filesystem::is_empty(tree.Path("tmp")));
    }
}

// A new file gets its mode; an old one keeps its own and its place, also behind a link.
TEST(Config, ModeAndPlaceOfTheFile) {
    const Tree tree;
    EXPECT_EQ(tree.Shell("umask 077; ln -s d link; tqsmgr -config d -set a=1; stat -c '%a %F' d; ls -i d > made").out, "770 regular file\n");
    EXPECT_EQ(tree.Shell("chmod 604 d; tqsmgr -nonotify kfxd -config link -set b=1; stat -c '%a %F' d; ls -i d | cmp - made").out, "604 regular file\n");
    EXPECT_EQ(tree.Read(kCalls), "kfxd update\nlrp\nlrp\n");
    // What cannot be synced is written all the same.
    EXPECT_EQ(tree.Shell("tqsmgr -nonotify kfxd -config /dev/null -set a=1; ls tmp").out, "");
    // Without a reader there is no waiting. The map is read first.
    EXPECT_EQ(tree.Shell("mv tmp away; tqsmgr -config d -set ''; echo $?; mv away tmp").out, "40\n");
    EXPECT_EQ(tree.Shell("mkfifo fifo; timeout -s KILL 10 tqsmgr -config fifo -set a=1").code, 40);
    tree.Write(kMap, "<SystemMap>");
    EXPECT_EQ(tree.Run(Words("-config d -set a=2")).code + tree.Run(Words("-config new -set a=2")).code, 40);
    EXPECT_EQ(tree.Read("d") + tree.Read("new"), "a=1\nb=1\n(none)");
}
// clang-format on

}  // namespace
