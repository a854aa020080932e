// Maps of earlier formats brought to the current one.
#include "sample_map.h"

namespace {

constexpr const char* kOldFormat = R"(serial="9" security="false" version="2.0")";

// clang-format off
TEST(Conversion, FourteenSteps) {
    const std::string added = ";Enable=true;Event File=;Mapped Port=0;Auth Enabled=true";
    const std::string all = ";Logging Enabled=true;Events Enabled=true" + added + ";First TS Port=2001;Last TS Port=2008";
    const std::string port = "Port Number=7001;Description=;Template=;", logs = "Name=c;Port Number=1;Description=;Logging Enabled=true;Events Enabled=true;";
    const auto lab = [&](const std::string& values, const std::string& inside = "") { return ElementText(4, "Platform", port + values, inside); };
    const auto console = [&](const std::string& values) { return ElementText(8, "Console", logs + values); };
    // A switch that the conversion adds has no type.
    const auto untyped = [](const std::string& text) { return Replaced(text, SwitchText(16, "Enable", "true"), Prop(16, "Enable", "true")); };
    const std::string rest = "        <Cache ID=\"3.x\"/>\n        <!-- kept -->\n", free = ConsoleText(4, "ID=4:5;Name=WEB;Type=mvs");
    const std::string before =
        lab("ID=3;Name=Lab;Address=1;Model=m100;Conn=NAT;Logging Enabled=false;Conn=NAT", console("ID=3:1;Type=LINUX;Enable=false") + rest) + free +
        lab("ID=5;Name=lab;Address=1;Model=Z80;Enable=false", console("ID=5:2;Type=mvs") + rest + console("ID=15:3;Type=aix")) +
        lab("ID=6;Name=web;Address=2;Model=X9;Last TS Port=9") + lab("ID=7;Name=p-Lab;Address=3;Model=Z80");
    const std::string after =
        lab("ID=3;Name=P-P-Lab;Address=1;Model=m100" + Replaced(all, "true", "false"),
            console("ID=3:1;Type=LINUX;Enable=false;Event File=;Mapped Port=0;Auth Enabled=true") + rest +
            untyped(console("ID=3:2;Type=Unknown" + added)) + untyped(console("ID=15:3;Type=aix" + added))) + free +
        lab("ID=6;Name=P-web;Address=2;Model=X9;Last TS Port=9" + Replaced(all, ";Last TS Port=2008", "")) +
        lab("ID=7;Name=p-Lab;Address=3;Model=Unknown" + all);
    Check({before, "-U", 0, after}, kOldFormat);
    // A prefixed name may be taken, also by one that was prefixed before, or by a console.
    const auto named = [&](const char* id, const std::string& name, const std::string& inside = "") {
        return lab(std::string("ID=") + id + ";Name=" + name + ";Address=" + id + ";Model=X9" + all, inside); };
    const std::string taken = ConsoleText(8, "ID=5:1;Name=p-P-X"), z = ConsoleText(4, "ID=8:5;Name=Z");
    Check({named("1", "x") + named("2", "X") + named("3", "P-x") + named("4", "p-X") + named("5", "y", taken) + z + named("6", "z") + named("7", "P-z"), "-U", 0,
           named("1", "P-P-P-x") + named("2", "X") + named("3", "P-P-P-P-x") + named("4", "p-X") + named("5", "y", taken) + z + named("6", "P-P-z") + named("7", "P-z")}, kOldFormat);
    // Without the reference files every value is unknown.
    const Tree tree;
    tree.WriteMap(PlatformText("ID=1;Name=a", ConsoleText(8, "ID=1:1;Type=linux")), kOldFormat);
    const std::string missing = " : No such file or directory\n";
    EXPECT_EQ(tree.Shell("rm " + kModels + " " + kOsTypes + "; tqsmgr -U").err, "cannot open " + kModels + missing + "cannot open " + kOsTypes + missing);
    EXPECT_EQ(tree.Read(kMap), MapText(PlatformText("ID=1;Name=a;Model=Unknown", ConsoleText(8, "ID=1:1")), kAttributes));
}

TEST(Conversion, FailuresLeaveTheFile) {
    const std::string a = PlatformText("ID=1;Name=a;Address=1");
    Check({a, "-U", 21, "Cannot find the \"version\" attribute for SystemMap."}, "serial=\"9\"");
    for (const MapRun& run : std::initializer_list<MapRun>{
        {a + PlatformText("ID=~;Address=1"), "-U", 21, "ID not found in XML data."},
        {PlatformText("ID=~;Address=1") + a, "-U", 21, "ID not found in XML data."},
        {a + PlatformText("ID=2;Name=~"), "-U", 1, "Cannot find Property \"name=Name\" in \"PropertyMap\"."},
        {Replaced(a, "    </Platform>", "        <Console/>\n    </Platform>"), "-U", 1, "Cannot find PropertyMap in \"Console\"."}}) {
        Check(run, kOldFormat);
    }
    // A current map is not even written.
    const Tree tree;
    tree.Write(kMap, "<SystemMap version='3.0'><!-- x --></SystemMap>");
    EXPECT_EQ(tree.Run({"-U"}).code, 0);
    EXPECT_EQ(tree.Read(kMap) + tree.Read(kKfxConf), "<SystemMap version='3.0'><!-- x --></SystemMap>" + kKfxConfHeader);
}

// clang-format on

}  // namespace
