// The transaction log: entries, quoting and rotation. Its replay is tested on its own.
#include <regex>

#include "fixture.h"

static const std::string kArgError = "Invalid or missing argument. Use \"-h\" to display help.";

// An entry whose time reads T; "message" as it stands behind the hashes, for a failure.
static std::string Entry(const std::string& command, const std::string& code,
                         const std::string& message = "") {
    const std::string rule(74, '#');
    return rule + "\n# Time: T\n" + rule + "\n\n" + command +
           " \n\necho \"Recorded Exit Code = " + code +
           ", This Exit Code = $?\"\n\n# EXIT CODE: " + code + "\n" +
           (code == "0" ? "\n" : "# ERROR MESSAGE:\n#   " + message + "\n\n");
}

static std::string Log(const Tree& tree) {
    const std::regex time("# Time: [0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}\n");
    return std::regex_replace(tree.Read(kLog), time, "# Time: T\n");
}

TEST(Log, Entries) {
    const Tree tree;
    const RunResult r = tree.Shell("chgrp " + OtherGroup() +
                                   R"sh( usr/opt/tqs; umask 077; yes '<a>' | head -301 >301
        tqsmgr -security true; tqsmgr; tqsmgr -f 301 -view security
        tqsmgr -add platform -name p_1 -model M -addr 1 -port 1 2>/dev/null
        mkdir "a b"; ln -s "$(readlink path/tqsmgr)" "a b/t=q"; ./a\ b/t=q -write kfxconf
        stat -Lc '%a %g' usr/opt/tqs/logs/tqsmgr.log)sh");
    EXPECT_EQ(r.out, "660 " + OtherGroup() + "\n");
    // clang-format off
    EXPECT_EQ(Log(tree),
        Entry("tqsmgr -security \"true\"", "0") + Entry("tqsmgr", "11", kArgError) +
        Entry("tqsmgr -f \"301\" -view \"security\"", "90") +
        Entry("tqsmgr -add \"platform\" -name \"p_1\" -model \"M\" -addr \"1\" -port \"1\"", "22",
              "Platform name contains invalid characters.\n#   Use only alpha-numeric characters, \".\", and \"-\".") +
        Entry("\"./a b/t=q\" -write \"kfxconf\"", "0"));
    // clang-format on
}

TEST(Log, Words) {
    const Tree tree;
    const std::string long_word(20000, 'w');
    // clang-format off
    const std::map<std::string, std::string> words = {
        {"", R"("")"}, {"a b*'!;é", R"("a b*'!;é")"}, {"a\tb\nc", "\"a\tb\nc\""}, {R"(a"b)", R"("a\"b")"},
        {"$x`y`", R"("\$x\`y\`")"}, {R"(a\b)", R"("a\b")"}, {R"(a\)", R"("a\\")"}, {"-;", R"("-;")"},
        {R"(a\\b)", R"("a\\\\b")"}, {R"(a\b$)", R"("a\\b\$")"}, {"\\\n", "\"\\\\\n\""}, {"-", "-"},
        {"-_./:,+@%=Z9", "-_./:,+@%=Z9"}, {"-a b", R"("-a b")"}, {"-'", R"("-'")"}, {"-~", R"("-~")"},
        {"-$(x)", R"w("-\$(x)")w"}, {"-é", R"("-é")"}, {long_word, "\"" + long_word + "\""}};
    // clang-format on
    std::vector<std::string> all;
    std::string line = "tqsmgr";
    for (const auto& [word, written] : words) {
        all.push_back(word);
        line += " " + written;
    }
    EXPECT_EQ(tree.Run(all).code, 11);
    EXPECT_EQ(Log(tree), Entry(line, "11", kArgError));
}

// The end of a here-document is EOF with the first number with which no line begins.
TEST(Log, Delimiters) {
    const std::map<std::string, std::string> cases = {
        {"E\n EOF\n", "EOF"},
        {"EOFx", "EOF1"},
        {"EOF1\nEOF23\nEOF", "EOF3"},
        {"EOF2\nEOF3\nEOF4\nEOF5\nEOF6\nEOF7\nEOF8\nEOF9\nEOF10\nEOF11\nEOF12\nEOF13\n", "EOF14"}};
    const Tree tree;
    for (const auto& [input, delimiter] : cases) {
        tree.Remove(kLog);
        EXPECT_EQ(tree.Run({"-update", "cache"}, input).code, 20);
        EXPECT_NE(tree.Read(kLog).find("<<" + delimiter + "\n" + input), std::string::npos)
            << input;
    }
}

TEST(Log, Rotation) {
    const Tree tree;
    const std::string full(1048576, '#');
    tree.Write(kLog, full);
    tree.Write(kOldLog, "older");
    EXPECT_EQ(tree.Run({"-h"}).code, 0);
    EXPECT_EQ(Log(tree), full + Entry("tqsmgr -h", "0"));
    EXPECT_EQ(tree.Read(kOldLog), "older");
    // Of runs that overlap one rotates, and they stand in the order of their effect.
    tree.Write(kLog, full + "#");
    const RunResult r = tree.Shell(R"sh(
        for n in $(seq 10 29); do tqsmgr -add system -name c$n -addr 10.0.0.$n -port 1 & done; wait
        sed -n 's/.*"Name".* value="\(c..\)".*/\1/p' usr/opt/tqs/config/SystemMap.xml >&2
        sed -n 's/.* -name "\(c..\)".*/\1/p' usr/opt/tqs/logs/tqsmgr.log)sh");
    EXPECT_EQ(r.out, r.err);
    EXPECT_EQ(r.out.size(), 20 * 4);
    const std::string add = "tqsmgr -add \"system\" -name \"c10\" -addr \"10.0.0.10\" -port \"1\"";
    EXPECT_EQ(Log(tree).size(), 20 * Entry(add, "0").size());
    EXPECT_NE(tree.Read(kMap).find("serial=\"21\""), std::string::npos);
    EXPECT_EQ(tree.Read(kOldLog).size(), 1048577);
}

TEST(Log, ARunThatCannotBeRecordedChangesNothing) {
    const Tree tree;
    // The second limit, in blocks of 512 bytes, leaves room for the map but not for an entry.
    ExpectRuns(tree, "",
               {{"ulimit -f 0; tqsmgr -h", 41, "Write failed for " + kLog},
                {"ulimit -f 0; tqsmgr -security true", 41, "Write failed for " + kLog}});
    // Nor for the input of a command: what is left of it must not be repeated.
    const std::string before(60000, '#');
    tree.Write(kLog, before);
    tree.Write("cache", "<?xml version=\"1.0\"?>\n<Cache/>" + std::string(20000, '\n'));
    ExpectRuns(tree, "ulimit -f 128; tqsmgr",
               {{"-update cache -platform p <cache", 41, "Write failed for " + kLog}});
    EXPECT_EQ(tree.Read(kLog), before +
                                   "echo \"Recorded Exit Code = 41, This Exit Code = $?\"\n\n"
                                   "# EXIT CODE: 41\n# ERROR MESSAGE:\n#   Write failed for " +
                                   kLog + "\n\n");
    tree.Remove(kProduct + "logs");
    ExpectRuns(tree, "tqsmgr", {{"-security true", 40, "Cannot open " + kLog}});
}
