// -add system: the console in a platform and the standalone one, refusals and their order.
#include "sample_map.h"

TEST(AddConsole, InAPlatformAndStandalone) {
    const Tree tree;
    const auto platform = [](const std::string& inside) {
        return ElementText(4, "Platform", "ID=12;Name=p1;Address=10.0.0.5;Port Number=7001",
                           "        <Cache/>\n" + inside);
    };
    tree.WriteMap(platform(""), R"(serial="007" security="false" version="3.0")");
    // The map is written although kfx.conf cannot be made of a platform without its model.
    for (const char* words : {"-name db1 -platform p1 -port 2005",
                              "-name Db.2 -addr 10.0.0.5 -port 02 -type LINUX -logging 0 -enable 0 "
                              "-auth 0 -evfile basic -mport 5 -comment 'a  b'"}) {
        const RunResult r = tree.Shell(std::string("tqsmgr -add system ") + words);
        EXPECT_EQ(r.code, 21);
        EXPECT_EQ(r.err, "tqsmgr: Cannot find Property \"name=Model\" in \"PropertyMap\".\n");
    }
    EXPECT_FALSE(tree.Exists(kCalls));
    // clang-format off
    EXPECT_EQ(tree.Read(kMap), MapText(
        platform(ConsoleText(8, "ID=12:2005;Address=10.0.0.5;Name=db1;Port Number=2005")) +
        ConsoleText(4, "ID=007:02;Address=10.0.0.5;Name=Db.2;Type=LINUX;Port Number=02;Description=a  b;"
                       "Logging Enabled=false;Events Enabled=false;Enable=false;Event File=basic;"
                       "Mapped Port=5;Auth Enabled=false"), R"(serial="8" security="false" version="3.0")"));
}

// A case also has faults that are looked for later, as far as they go together. Platform p3 has no
// address, and p4 no identifier.
TEST(AddConsole, ChecksInOrder) {
    const Tree tree;
    tree.WriteMap(
        ElementText(4, "Platform", "ID=12;Name=p1;Address=10.0.0.5;Port Number=7001",
                    ElementText(8, "Console", "Name=c_1;Port Number=2001")) +
        ElementText(4, "Platform", "ID=12;Name=p3") + ElementText(4, "Platform", "ID=~;Name=p4;Address=10.0.0.6") +
        ElementText(4, "Console", "Name=WEB1;Address=10.0.0.5;Port Number=3001"), "security=\"false\"");
    ExpectRuns(tree, "tqsmgr -add system", {
        {"-name C_1 -addr 1.2.3 -port x", 22, "System name contains invalid characters.\n"
         "Use only alpha-numeric characters, \".\", and \"-\"."},
        {"-name web1 -addr 1.2.3 -port x", 5, "Duplicate name \"web1\"."},
        {"-name P1 -addr 1.2.3 -port x", 5, "Duplicate name \"P1\"."},
        {"-name c -addr 1.2.3 -port x", 12, "Invalid IP address \"1.2.3\"."},
        {"-name c -addr 10.0.0.5 -port x -mport y", 13, "Invalid port number \"x\"."},
        {"-name c -addr 10.0.0.5 -port 7001 -mport abc -type No", 13, "Invalid port number \"abc\"."},
        {"-name c -platform none -port 7001 -type No", 17, "The OS type is not in the database."},
        {"-name c -platform P1 -port 7001 -evfile No", 1, "Cannot find Platform \"P1\"."},
        {"-name c -platform p3 -port 7001 -evfile No", 1, "Cannot find Property \"name=Address\" in \"PropertyMap\"."},
        {"-name c -platform p1 -port 7001 -evfile No", 7, "Duplicate port number \"7001\"."},
        {"-name c -platform p1 -port 3001 -evfile No", 7, "Duplicate port number \"3001\"."},
        {"-name c -addr 10.0.0.5 -port 2001 -evfile No", 7, "Duplicate port number \"2001\"."},
        {"-name c -addr 10.0.0.6 -port 7001 -evfile No -logging 0 -events 1", 26, "Event file \"No\" not found."},
        {"-name c -platform p4 -port 7001 -logging 0 -events 1", 3, "Events cannot be enabled when logging is disabled."},
        {"-name c -platform p4 -port 7001 -logging 1 -events 0", 21, "ID not found in XML data."},
        {"-name c -addr 10.0.0.6 -port 7001", 21, "Cannot find the \"serial\" attribute for SystemMap."}});
    // clang-format on
}
