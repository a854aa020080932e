// The process around a run: the lock, the notifications, descriptors, files that fail.
#include <regex>

#include "fixture.h"

static const std::string kAdd = "tqsmgr -add system -name c -addr 10.0.0.1 -port 1";
// For the shell: the lock and the map; the lock is held through descriptor 8.
static const std::string kHeld =
    "L=" + kLock + "; M=" + kMap + "; echo stale >$L; exec 8<$L; flock 8\n";

TEST(Lock, IsWaitedFor) {
    const Tree tree;
    // A new file under the lock's name is the lock from then on.
    const RunResult r = tree.Shell("G=" + OtherGroup() + "\n" + kHeld + R"sh(
        tqsmgr -security true 8<&- & tqsmgr -security true 8<&- & kill -0 $!
        sleep 0.15; kill $!; wait $!; echo $? $(cat $L) $(grep -c true $M)
        rm $L; exec 9>$L; flock 9; exec 8<&-; sleep 0.15; echo $(grep -c true $M)
        exec 9>&-; wait; echo $(grep -c true $M) $(wc -c <$L)
        mkfifo in; tqsmgr -update cache -platform none <in & exec 3>in; sleep 0.15
        [ "$(cat $L)" = $! ] && echo own; exec 3>&-; wait; wc -c <$L
        chgrp $G usr/opt/tqs; rm $L; umask 077; tqsmgr -view security; stat -Lc '%a %g' $L)sh");
    EXPECT_EQ(r.out, "143 stale 0\n0\n1 0\nown\n0\ntrue\n660 " + OtherGroup() + "\n") << r.err;
    tree.Remove(kLock);
    tree.Remove("in");
    std::filesystem::create_directory(tree.Path(kLock));
    const std::string message = "Cannot open lock file \"" + kLock + "\".";
    ExpectRuns(tree, "tqsmgr", {{"-security false", 43, message}});
}

// What a run was told of the map is no longer true once its lock file is another one, or none.
TEST(Lock, IsLookedAtAgain) {
    const Tree tree;
    tree.Write("c", "a=1\n");
    tree.Write("n", "new lock");
    const RunResult r = tree.Shell(kHeld + R"sh(exec 8<&-
        for words in "-security true" "-write kfxconf" "-config c -set a=2" "-config d -set a=2"; do
            rm -f in; mkfifo in; exec 3<>in; : >$L; tqsmgr -f in $words 3<&- &
            until [ -s $L ]; do sleep 0.01; done
            rm $L; [ "$words" = "-write kfxconf" ] && mv n $L; cat $M >&3; exec 3<&-; wait $!; echo $?
        done; cat c; ls)sh");
    EXPECT_EQ(r.out, "43\n43\n43\n43\na=1\nc\netc\nin\npath\nstdin\ntmp\nusr\n");
    const std::string line = "tqsmgr: Lock file \"" + kLock + "\" was removed or replaced.\n";
    EXPECT_EQ(r.err, line + line + line + line);
    EXPECT_FALSE(tree.Exists(kKfxConf));
}

TEST(Notification, FollowsTheAction) {
    // clang-format off
    const std::map<std::string, std::string> cases = {
        {"-add system -name a -addr 10.0.0.1 -port 1", "web\nkfxd update\nlrp\n"},
        {"-nonotify web -add system -name b -addr 10.0.0.1 -port 2", "kfxd update\nlrp\n"},
        {"-nonotify kfxd -add system -name c -addr 10.0.0.1 -port 3", "web\nlrp\n"},
        {"-nonotify kfxd -nonotify web -add system -name d -addr 10.0.0.1 -port 4", "lrp\n"},
        {"-config f -set a=b", "kfxd update\nlrp\n"}, {"-add system -name d -addr 1 -port 5", "(none)"},
        {"-config f -get a", "(none)"}, {"-security true", "(none)"}, {"-write kfxconf", "(none)"}};
    // clang-format on
    const Tree tree;
    for (const auto& [words, calls] : cases) {
        tree.Remove(kCalls);
        EXPECT_EQ(tree.Shell("tqsmgr " + words).signal, 0);
        EXPECT_EQ(tree.Read(kCalls), calls) << words;
    }
}

// What the web notification does, and the status that its error block tells. Runs that it starts
// itself have their entries behind it; a log that it has emptied stays empty.
TEST(Notification, FailureStandsInItsOwnEntry) {
    const std::string recorded =
        "echo \"Recorded Exit Code = 0, This Exit Code = $?\"\n\n# EXIT CODE: 0\n\n";
    const std::regex banner("#{74}\n# Time: .*\n#{74}\n\n");
    // clang-format off
    const std::string failure =
        "tqsmgr -add \"system\" -name \"c\" -addr \"10.0.0.1\" -port \"1\" \n\n# ERROR MESSAGE:\n"
        "#   Error: \"" + kProduct + "bin/notifyweb > /dev/null 2>&1\" exited with ";
    const std::string state = "awk '/SigIgn/; END{exit 1}' /proc/self/status >";
    const std::map<std::string, std::string> cases = {
        {"exit 3", failure + "3.\n#   \n\n" + recorded},
        {"tqsmgr -security true; tqsmgr -h; exit 255", failure + "255.\n#   \n\n" + recorded +
         "tqsmgr -security \"true\" \n\n" + recorded + "tqsmgr -h \n\n" + recorded},
        {"cat >got; ls -l /proc/self/fd >fds; umask >mask; exec " + state + "sig",
         failure + "1.\n#   \n\n" + recorded},
        {"yes | head -c 1000000; yes | head -c 1000000 >&2; kill -9 $$", failure + "137.\n#   \n\n" + recorded},
        {": >" + kLog + "; false", ""}};
    // clang-format on
    const Tree tree;
    for (const auto& [script, log] : cases) {
        tree.WriteMap("");
        tree.Remove(kLog);
        tree.Remove(kCalls);
        tree.Write(kProduct + "bin/notifyweb", "#!/bin/sh\n" + script);
        ExpectRuns(tree,
                   "umask 027; B='env --ignore-signal=HUP'; $B " + state + "own; echo in | $B",
                   {{kAdd, 0}});
        EXPECT_EQ(tree.Read(kCalls), "kfxd update\nlrp\n");
        EXPECT_EQ(std::regex_replace(tree.Read(kLog), banner, ""), log);
    }
    EXPECT_EQ(tree.Read("got"), "");
    EXPECT_EQ(tree.Read("sig") + tree.Read("mask"), tree.Read("own") + "0027\n");
    EXPECT_EQ(tree.Read("fds").find(kProduct), std::string::npos) << tree.Read("fds");
}

// Two that overlap: the first amends its entry before the second does, whose entry has been moved
// by that and then by a rotation.
TEST(Notification, FailuresOfOverlappingRuns) {
    const Tree tree;
    tree.Write(kProduct + "bin/notifyweb", R"sh(#!/bin/sh
        wait_for() { until [ "$(grep -c "$1" $L)" = $2 ]; do sleep 0.01; done; }
        if mkdir first; then wait_for 'EXIT CODE' 2; exit 1; fi
        wait_for 'ERROR MESSAGE' 1; head -c 1048576 /dev/zero >>$L; tqsmgr -h; exit 2)sh");
    const RunResult r = tree.Shell("export L=" + kLog + "; " + kAdd + R"sh( &
        until [ -d first ]; do sleep 0.01; done; tqsmgr -remove system -name c; wait
        grep -Eao '^tqsmgr -[a-z]+|exited with ..' $L.old)sh");
    EXPECT_EQ(r.out, "tqsmgr -add\nexited with 1.\ntqsmgr -remove\nexited with 2.\n") << r.err;
}

// While one hangs, other runs go on; an interrupt from the terminal ends it alone.
TEST(Notification, HangsAndHoldsNobodyUp) {
    const Tree tree;
    tree.Write(kProduct + "bin/notifyweb", "#!/bin/sh\nmkfifo go\nread line <go");
    const RunResult r = tree.Shell("setsid env --default-signal " + kAdd + R"sh( &
        until [ -p go ]; do sleep 0.02; done
        grep -c 'EXIT CODE: 0' usr/opt/tqs/logs/tqsmgr.log; tqsmgr -security true; echo $?
        cat calls; kill -INT -$!; wait $!; echo $?; cat calls)sh");
    EXPECT_EQ(r.out, "1\n0\n0\nkfxd update\nlrp\n") << r.err;
}

TEST(Streams, LostOutput) {
    const Tree tree;
    ExpectRuns(tree, kAdd, {{"", 0}});
    const std::string lost = "Write failed for \"standard output\".";
    const std::string kfx = "Write failed for \"" + kKfxConf + "\".";
    for (const std::string to : {">/dev/full", ">&-"}) {
        ExpectRuns(tree, to + " tqsmgr -view", {{"security", 41, lost}, {"kfxconf", 41, kfx}});
        ExpectRuns(tree, to + " tqsmgr", {{"-h", 41, lost}, {"-V", 41, lost}});
    }
    // The reader of the pipe is gone before the run may print.
    const RunResult r =
        tree.Shell(kHeld + R"sh((exec 8<&-; { tqsmgr -view kfxconf; echo $? >&2; } | :) &
        sleep 0.1; exec 8<&-; wait)sh");
    EXPECT_EQ(r.err, "tqsmgr: " + kfx + "\n41\n");
    // Nothing to print, nothing lost.
    tree.WriteMap("");
    ExpectRuns(tree, "tqsmgr", {{"-view kfxconf >/dev/full", 0}});
}

// Output that nobody reads holds up the run that prints it alone, and that one can be ended, as one
// can that waits for a file.
TEST(Streams, HoldNobodyUp) {
    const Tree tree;
    const RunResult r = tree.Shell(kAdd + R"sh(
        echo a=1 >c; mkfifo p in; exec 5<>p 6<>in; head -c 65536 /dev/zero >&5
        for words in "-view security" "-view kfxconf" "-config c -get a" "-remove system -name d"; do
            tqsmgr $words >&5 2>&1 & sleep 0.1; tqsmgr -security true; echo $?; kill $!; wait $!; echo $?
        done
        tqsmgr -config in -get a & sleep 0.1; kill $!; wait $!; echo $?)sh");
    EXPECT_EQ(r.out, "0\n143\n0\n143\n0\n143\n0\n143\n143\n");
}

TEST(Streams, ClosedAtTheStart) {
    std::map<std::string, std::string> whole;
    for (const char* closed : {"", "0<&-", "1>&-", "2>&-", "0<&- 1>&- 2>&-"}) {
        const Tree tree;
        EXPECT_EQ(tree.Shell(kAdd + " " + closed + "; " + kAdd + " " + closed).code, 5) << closed;
        auto files = tree.Files();
        files["log"] = std::regex_replace(tree.Read(kLog), std::regex("# Time: .*\n"), "");
        whole = whole.empty() ? files : whole;
        EXPECT_EQ(files, whole) << closed;
        EXPECT_EQ(tree.Read(kLock), "");
    }
}

TEST(Files, FullDisk) {
    const Tree tree;
    tree.WriteMap("    <!--" + std::string(300000, 'x') + "-->\n");
    ExpectRuns(tree, "ulimit -f 400; tqsmgr",
               {{"-security true", 41, "Cannot write to \"" + kMap + ".tmp\"."}});
}

// A link is followed for root and for whose it is, but nothing is created through one.
TEST(Files, Links) {
    const std::string conf = "Cannot open \"" + kKfxConf + "\".";
    const std::map<std::string, Case> cases = {
        {kLock, {"-security true", 43, "Cannot open lock file \"" + kLock + "\"."}},
        {kLog, {"-security true", 40, "Cannot open " + kLog}},
        {kKfxConf, {"-write kfxconf", 40, conf}},
        {"c", {"-config c -set a=1", 40, "Cannot open \"c\"."}}};
    for (const auto& [path, refused] : cases) {
        const Tree tree;
        tree.Write("target", "old");
        EXPECT_EQ(tree.Shell("ln -s $PWD/target link; ln -s $PWD/link " + path).code, 0);
        ExpectRuns(tree, "tqsmgr", {{refused.words, 0}});
        EXPECT_NE(tree.Read("target"), "old");
        tree.Remove("target");
        ExpectRuns(tree, "tqsmgr", {refused});
        EXPECT_FALSE(tree.Exists("target"));
        tree.Write("target", "old");
        if (tree.Shell("chown -h 1 link").code == 0) {
            ExpectRuns(tree, "tqsmgr", {refused});
            EXPECT_EQ(tree.Read("target"), "old");
        }
    }
}

// What a member plants in place of the log: the file that takes its place executes as nobody, and a
// pipe records nothing.
TEST(Files, PlantedLogs) {
    const Tree tree;
    tree.Write(kLog, "#");
    tree.Write(kProduct + "bin/notifyweb", "#!/bin/sh\nexit 1");
    const RunResult r = tree.Shell("L=" + kLog + "; chmod 6777 $L; " + kAdd + R"sh(; stat -c %a $L
        grep -c exited $L; rm $L; mkfifo $L; tqsmgr -security true; echo $?
        echo a=1 | (rm $L; tqsmgr -config /dev/stdin -get a))sh");
    EXPECT_EQ(r.out, "666\n1\n40\n1\n") << r.err;
}
