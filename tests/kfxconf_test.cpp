// The lines of kfx.conf, on standard output and in the file.
#include <unistd.h>

#include "sample_map.h"

// clang-format off
static const std::string kSwitches = "Logging Enabled=true;Events Enabled=false;Enable=TRUE;Auth Enabled=true;";
static const std::string kEmpty = kSwitches + "Event File=;Description=;Mapped Port=0;";
static const std::string kFull = kSwitches + "Event File=basic;Description=a  'b';Mapped Port=00;";
static const std::string kInside = "Name=c1;Port Number=2;Type=;" + kEmpty;
static const std::string kPlatform =
    "Name=p1;Address=10.0.0.1;Port Number=7;Model=M100;" + kEmpty + "First TS Port=;Last TS Port=;";
static const std::string kMixed = "<!--c--><Other/>" +
    ElementText(4, "Platform", kPlatform + "Template=x y",
        ElementText(8, "Console", kInside) + ElementText(8, "Console", "Name=typeless;Port Number=3;" + kEmpty) +
        ElementText(8, "Console", "Address=9.9.9.9;Name=c2;Port Number=4;Type=aix;" + kFull)) +
    ElementText(4, "Console", "Name=s1;Address=10.0.0.2;Port Number=5;Type=a b;" + kFull,
        ElementText(8, "Console", kInside)) +
    ElementText(4, "Platform", "Name=p1;Address=10.0.0.3;Port Number=8;Model=;Template=;" + kFull +
        "First TS Port=1;Last TS Port=2");
static const std::string kP1 = "p1 10.0.0.1 7 7 0 M100 p1 \"Unknown\" 1 0 0 1 \"\" \"none\" x y \"\" \"\"\n";
static const std::string kC1 = "c1 10.0.0.1 2 7 0 M100 p1 \"\" 1 0 0 1 \"\" \"none\" x y \"\" \"\"\n";
static const std::string kC2 = "c2 10.0.0.1 4 7 00 M100 p1 \"aix\" 1 0 0 1 basic \"a  'b'\" x y \"\" \"\"\n";
static const std::string kS1 = "s1 10.0.0.2 5 23 00 <other> 10.0.0.2 \"a b\" 1 0 0 1 basic \"a  'b'\" \"\" \"\" \"\"\n";
static const std::string kS1c1 = "c1 10.0.0.2 2 23 0 <other> 10.0.0.2 \"\" 1 0 0 1 \"\" \"none\" \"\" \"\" \"\"\n";
static const std::string kP1b = "p1 10.0.0.3 8 8 00  p1 \"Unknown\" 1 0 0 1 basic \"a  'b'\" \"\" 1 2\n";
static const std::string kAll = kP1 + kC1 + kC2 + kS1 + kS1c1 + kP1b;
// clang-format on

TEST(KfxConf, LinesAndSelection) {
    const Tree tree;
    tree.WriteMap(kMixed);
    // clang-format off
    ExpectRuns(tree, "tqsmgr -view kfxconf", {
        {"", 0, kAll}, {"-name p1", 0, kP1 + kP1b}, {"-name c1", 0, kC1 + kS1c1}, {"-name c2 -name c2", 0, kC2},
        {"-name P1", 1, "Console \"P1\" not found."}, {"-name typeless", 1, "Console \"typeless\" not found."}});
    EXPECT_FALSE(tree.Exists(kKfxConf));
    // A new file gets the product's group and a mode of its own; an old one, also where a link
    // leads to it, keeps what it has.
    ASSERT_EQ(tree.Shell("chgrp " + OtherGroup() + " usr/opt/tqs").code, 0);
    const std::string write = "umask 077; tqsmgr -write kfxconf; stat -Lc '%a %g'";
    ExpectRuns(tree, write, {{kKfxConf, 0, "660 " + OtherGroup() + "\n"}});
    EXPECT_EQ(tree.Read(kKfxConf), kKfxConfHeader + kAll);
    tree.WriteMap("");
    ExpectRuns(tree, "(cd usr/opt/tqs/config; mv kfx.conf new; ln -s new kfx.conf; chmod 604 new; chgrp $(id -g) new);" + write, {{kKfxConf, 0, "604 " + std::to_string(getegid()) + "\n"}});
    EXPECT_EQ(tree.Read(kKfxConf), kKfxConfHeader);
}

TEST(KfxConf, IncompleteMaps) {
    const Tree tree;
    const std::map<std::string, std::string> cases = {
        {ElementText(4, "Platform", kPlatform), "Cannot find Property \"name=Template\" in \"PropertyMap\"."},
        {"<Console/>", "Cannot find PropertyMap in \"Console\"."},
        {"<Platform><PropertyMap><Property name=\"Name\"/></PropertyMap></Platform>",
         "Cannot find attribute \"value=\" in \"Property\"."}};
    // clang-format on
    for (const auto& [inside, message] : cases) {
        tree.WriteMap(kMixed + inside + kMixed);
        EXPECT_EQ(tree.Run({"-write", "kfxconf"}).code, 21);
        EXPECT_EQ(tree.Read(kKfxConf), kKfxConfHeader + kAll);
        const RunResult r = tree.Run({"-view", "kfxconf"});
        EXPECT_EQ(r.out, kAll);
        EXPECT_EQ(r.err, "tqsmgr: " + message + "\n");
    }
    tree.Write(kMap, "<Map><SystemMap/></Map>");
    ExpectRuns(tree, "tqsmgr", {{"-view kfxconf", 21, "Cannot find SystemMap element."}});
    // The file is opened before its text is made.
    ASSERT_EQ(tree.Shell("rm " + kKfxConf + "; mkdir " + kKfxConf).code, 0);
    ExpectRuns(tree, "tqsmgr", {{"-write kfxconf", 40, "Cannot open \"" + kKfxConf + "\"."}});
}
