// The log is a shell script: fed to a shell in the state in which a session began, it ends in the
// state in which the session ended, with the same codes.
#include "sample_map.h"

namespace {

// clang-format off
TEST(Replay, RepeatsAMixedSession) {
    const std::string xml = "<?xml version=\"1.0\"?>\n";
    // More than fits a pipe.
    const std::string large = "<!-- `touch hacked` $(touch hacked) \\ -->\n" + std::string(100000, '\n');
    const struct { std::string command; int code; std::string input = ""; } session[] = {
        {"", 11}, {"-add platform -name lab -model M100 -addr 10.0.0.1 -port 7001 -comment $(touch\thacked)", 0},
        {"-add platform -name LAB -model M100 -addr 10.0.0.2 -port 7001", 5},
        {"-add platform -name p2 -model X9 -addr 10.0.0.2 -port 7001 -comment `touch\thacked`\\", 0},
        {"-add system -name c1 -platform lab -port 2003 -type linux -comment \"quoted\"\\$x", 0},
        {"-update platform -name lab -comment -$(touch\thacked)", 0}, {"-update platform -name lab -model no\\\nsuch", 18},
        {"-update cache -platform lab", 0, xml + "<Cache><!-- $(touch hacked)\nEOF\n--></Cache>"},
        {"-update cache -platform lab", 20, xml + "<Cache>\\\n`touch hacked`\n"},
        {"-update cache -platform p2", 0, xml + "<Cache/>\n" + large},
        {"-update cache -platform lab", 20, xml + "<Cache a='b\\$'/>\n<!--\nEOF\nEOF1é\n-->\\"},
        {"-remove cache -platform lab", 0}, {"-config d.conf -set a=$(touch\thacked)", 0}, {"-config d.conf -set b=\\\"1\\", 0},
        {"-security true", 0}, {"-nonotify web -add system -name c3 -platform p2 -port 2003", 0},
        {"-view kfxconf -name $HOME", 1}, {"-f other\tmap.xml -U", 20}, {"-remove platform -name lab", 0},
        {"-add system -name LAB -addr 10.0.0.1 -port 7001", 0}};
    const Tree first;
    std::string codes;
    for (const auto& step : session) {
        const RunResult r = first.Run(Words(step.command), step.input);
        EXPECT_EQ(r.code, step.code) << step.command << "\n" << r.err;
        codes += std::to_string(step.code) + " " + std::to_string(step.code) + "\n";
    }
    const Tree second;
    second.Write("replay.sh", first.Read(kLog));
    const std::string line = "s/^Recorded Exit Code = \\([0-9]*\\), This Exit Code = \\([0-9]*\\)$/\\1 \\2/p";
    EXPECT_EQ(second.Shell("sh replay.sh | sed -n '" + line + "'").out, codes);
    for (const std::string& path : {kMap, kKfxConf, kCalls, std::string("d.conf")}) {
        EXPECT_TRUE(second.Read(path) == first.Read(path)) << path;
    }
    const std::string timeless = "sed 's/# Time: .*//;s/tmp.tqsmgr\\..\\{6\\}//' " + kLog;
    EXPECT_TRUE(second.Shell(timeless).out == first.Shell(timeless).out);
    EXPECT_FALSE(first.Exists("hacked") || second.Exists("hacked"));
}
// clang-format on

}  // namespace
