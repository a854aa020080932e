// -add platform: what it adds, what it refuses and in which order, and the form of values.
#include "model/validation.h"
#include "sample_map.h"

static std::string Serial(const std::string& serial) {
    return "serial=\"" + serial + R"(" security="false" version="3.0")";
}

TEST(AddPlatform, AppendsItsSubtree) {
    const Tree tree;
    tree.WriteMap("    <!--first-->\n", Serial("007"));
    // clang-format off
    ExpectRuns(tree, "tqsmgr -add platform", {
        {"-name p1 -model m100 -addr 10.1.1.5 -port 7001", 0},
        {"-name P-2.x -model X9 -addr 10.000.0.1 -port 0070 -port 007 -logging 0 -events 1 -enable 0 -auth 0 "
         "-evfile basic -template 'a b' -mport 9 -first_ts_port 5 -last_ts_port 20 -comment \"<'\"", 0}});
    EXPECT_EQ(tree.Read(kMap), MapText("    <!--first-->\n" +
        PlatformText("ID=007;Name=p1;Address=10.1.1.5;Port Number=7001;Model=m100") +
        Replaced(ElementText(4, "Platform", "ID=8;Name=P-2.x;Address=10.000.0.1;Port Number=007;Model=X9;Description=<';"
            "Template=a b;Logging Enabled=false;Events Enabled=true;Enable=false;Event File=basic;"
            "Mapped Port=9;Auth Enabled=false;First TS Port=5;Last TS Port=20"), "<'", "&lt;&apos;"), Serial("9")));
    EXPECT_EQ(tree.Read(kKfxConf), kKfxConfHeader +
        "p1 10.1.1.5 7001 7001 0 m100 p1 \"Unknown\" 1 1 1 1 \"\" \"none\" \"\" 2001 2008\n"
        "P-2.x 10.000.0.1 007 007 9 X9 P-2.x \"Unknown\" 0 1 0 0 basic \"<'\" a b 5 20\n");
    // clang-format on
}

TEST(AddPlatform, SerialAsAtoiReadsIt) {
    const Tree tree;
    const std::string refused = "File does not contain a valid serial number.";
    for (const std::string object : {"platform -model X9", "system"}) {
        const std::string add = "tqsmgr -add " + object + " -name p -addr 10.0.0.1 -port 1";
        for (const char* serial : {"1", " 7", "+7x", "2147483646"}) {
            tree.WriteMap("", Serial(serial));
            ExpectRuns(tree, add, {{"", 0}});
            EXPECT_NE(tree.Read(kMap).find(Serial(std::to_string(atoi(serial) + 1))),
                      std::string::npos);
        }
        for (const char* serial : {"2147483647", "4294967297", "18446744073709551617",
                                   "-4294967295", "0", "-1", "x7", ""}) {
            tree.WriteMap("", Serial(serial));
            ExpectRuns(tree, add, {{"", 21, refused}});
        }
    }
}

// Every case but the last two also has all the faults that are looked for later.
TEST(AddPlatform, ChecksInOrder) {
    const Tree tree;
    tree.WriteMap(ElementText(4, "Platform", "ID=1;Name=p_1") +
                      ElementText(4, "Console", "ID=2:1;Address=10.0.0.1"),
                  "security=\"false\"");
    tree.Write(kEvents + "/a\tb", "");
    // clang-format off
    ExpectRuns(tree, "tqsmgr -add platform", {
        {"-name P_1 -model No -port x -addr 1.2.3", 5, "Duplicate name \"P_1\"."},
        {"-name p_2 -model No -port x -addr 1.2.3", 22, "Platform name contains invalid characters.\n"
         "Use only alpha-numeric characters, \".\", and \"-\"."},
        {"-name p -model No -port x -addr 1.2.3", 18, "The model is not in the database."},
        {"-name p -model 'X9\n' -port x -addr 1.2.3", 18, "The model is not in the database."},
        {"-name p -model X9 -port x -mport y -addr 1", 13, "Invalid port number \"x\"."},
        {"-name p -model X9 -port 1 -mport '' -first_ts_port z -addr 1", 13, "Invalid port number \"\"."},
        {"-name p -model X9 -port 1 -first_ts_port -1 -last_ts_port w -addr 1", 13,
         "Invalid port number \"-1\"."},
        {"-name p -model X9 -port 1 -last_ts_port '9 ' -addr 1", 13, "Invalid port number \"9 \"."},
        {"-name p -model X9 -port 1 -addr 1.2.3 -first_ts_port 2001 -last_ts_port 2017", 14,
         "The first and last terminal server port values are out of range. \n"
         "The difference between the values of the first and the last terminal \n"
         "server port should not be more than 16."},
        {"-name p -model X9 -port 1 -evfile none -addr 1.2.3", 12, "Invalid IP address \"1.2.3\"."},
        {"-name p -model X9 -port 1 -evfile none -addr 10.0.0.1", 26, "Event file \"none\" not found."},
        {"-name p -model X9 -port 1 -evfile 'a\tb' -addr 10.0.0.1", 26, "Event file \"a\tb\" not found."},
        {"-name p -model X9 -port 1 -addr 10.0.0.1", 6, "Duplicate IP address \"10.0.0.1\"."},
        {"-name p -model X9 -port 1 -addr 10.0.0.2", 21,
         "Cannot find the \"serial\" attribute for SystemMap."}});
    // clang-format on
    tree.Write(kMap, "<Other/>");
    ExpectRuns(tree, "tqsmgr -add platform",
               {{"-name p -model X9 -addr 10.0.0.2 -port 1", 5, "Duplicate name \"p\"."}});
}

TEST(Checks, FormOfValues) {
    for (const char* good : {"10.0.0.1", "10.000.0.1", "255.255.255.255", "001.2.3.4"}) {
        EXPECT_TRUE(IsValidAddress(good)) << good;
    }
    for (const char* bad : {"", "0.1.2.3", "000.1.2.3", "256.1.1.1", "1.2.3.256", "1.2.3.4.5",
                            "1.2.3.", "1..2.3", "1.2.3.a", "1.2.3.4 ", "1.2.3.+4", "0001.2.3.4"}) {
        EXPECT_FALSE(IsValidAddress(bad)) << bad;
    }
    EXPECT_FALSE(!IsValidName("web-1.lab") || IsValidName("a b") || IsValidName("é"));
    EXPECT_TRUE(IsValidPortRange("2001", "2016") && IsValidPortRange("0002001", "2001"));
    EXPECT_TRUE(IsValidPortRange("99999999999999999995", "100000000000000000010"));
    EXPECT_FALSE(IsValidPortRange("2001", "2017") || IsValidPortRange("2010", "2001") ||
                 IsValidPortRange("4294967297", "10") || IsValidPortRange("1", "4294967305"));
}

TEST(Checks, LinesOfReferenceFiles) {
    const Tree tree;
    tree.Write(kModels,
               std::string(9000, 'x') + "|Long\nA|B|C\n \r\n|crlf\r\nE|\na|no \n#|hash\n#x|no\n");
    tree.Write(kOsTypes, "#|\nlinux|Linux\nbare\nlast");
    const std::string model = "The model is not in the database.";
    const std::string type = "The OS type is not in the database.";
    // clang-format off
    const std::string add = "add() { tqsmgr -add $1 -name n$2 -addr 10.0.0.$2 -port 1 -${3% *} \"${3#* }\"; }; add";
    ExpectRuns(tree, add, {
        {"platform 1 'model LONG'", 0}, {"platform 2 'model b|c'", 0}, {"platform 3 'model CRLF'", 0},
        {"platform 4 'model B'", 18, model}, {"platform 4 'model hash'", 18, model},
        {"platform 4 'model no'", 18, model}, {"system 5 'type LINUX'", 0}, {"system 6 'type last'", 0},
        {"system 7 'type bare'", 17, type}, {"system 7 'type bare\n'", 17, type}, {"system 7 'type #'", 17, type}});
    ASSERT_EQ(tree.Shell("rm -r " + kModels + " " + kEvents + "; mkfifo " + kModels).code, 0);
    // A file that comes in pieces, then none.
    ExpectRuns(tree, "exec 7<>" + kModels + "; printf '#\\nS|M1' >&7; { sleep 0.1; echo 00 >&7; } & exec 7>&-; " + add, {
        {"platform 7 'model M100'", 26, "Event file \"\" not found."}});
    tree.Remove(kModels);
    ExpectRuns(tree, add, {
        {"platform 7 'model X9'", 18, "cannot open " + kModels + " : No such file or directory\ntqsmgr: " + model},
        {"system 7 'type last'", 26, "Event file \"\" not found."}});
    // clang-format on
}
