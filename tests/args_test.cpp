// Command lines: what is refused, what is help or version, and which action is chosen.
#include <regex>
#include <sstream>

#include "fixture.h"

static const std::string kArgError = "Invalid or missing argument. Use \"-h\" to display help.";

// Command lines between semicolons. Platform p exists, so that an update which is let through would
// be seen; $P adds a platform, $S a console.
static const std::string kRefused =
    R"(; x; -help; -V x; -V -h; -U x; -f; -f -h; -f x.xml; -nonotify;
-nonotify lrp; -nonotify web; -write; -write -h; -write kfxconf x; -view; -view -h; -view platform;
-view security x; -view kfxconf x; -view kfxconf -name; -view kfxconf -nonotify web; -security;
-security TRUE; -security -h; -security true x; -config; -config -h; -config f; -config f -get;
-config f -put a; -config f -get a b; -config f -set a=1 -nonotify web; -ADD platform; -add;
-add cache; -add platform -h; -update widget; -remove; -remove platform -platform p;
-remove system -name; -remove cache -name p; -update cache -name p; $P -name ''; $P -port;
$P -enable 2; $P -auth true; $P -newname x; $P -type linux; $P -f x.xml;
-add platform -name q -model X9 -addr 10.0.0.2; -add platform -name q -model X9 -port 1;
-add platform -name q -addr 10.0.0.2 -port 1; -add platform -model X9 -addr 10.0.0.2 -port 1;
-add system -name c -port 1; -add system -name c -addr 10.0.0.2; -add system -port 1 -addr 10.0.0.2;
$S -model X9; $S -template t; $S -platform p; $S -platform ''; $S -addr '' -platform p;
-update platform -comment x; -update platform -name p; -update platform -name p -newname '';
-update platform -name p -type linux; -update platform -name p -events 2; -update system -name c;
-update system -name c -platform p; -update system -name c -newname '';
-update platform -name p $(seq -f '-comment %g' 31))";

TEST(Args, RefusedLinesChangeNothing) {
    const Tree tree;
    ExpectRuns(tree, "tqsmgr", {{"-add platform -name p -model X9 -addr 10.0.0.1 -port 7001", 0}});
    tree.Remove(kLock);
    std::istringstream lines(std::regex_replace(kRefused, std::regex("\n"), " "));
    std::vector<Case> cases;
    for (std::string line; std::getline(lines, line, ';');) {
        cases.push_back({line, 11, kArgError});
    }
    ExpectRuns(tree,
               "P='-add platform -name q -model X9 -addr 10.0.0.2 -port 1'\n"
               "S='-add system -name c -addr 10.0.0.2 -port 1'\ntqsmgr",
               cases);
    EXPECT_FALSE(tree.Exists(kLock));
    ExpectRuns(tree, "tqsmgr", {{"-update platform -name p $(seq -f '-comment %g' 30)", 0}});
}

TEST(Args, TextThatNoMapCanHold) {
    const Tree tree;
    const std::string platform = "-add platform -name p -model X9 -addr 10.0.0.1 -port 1 ";
    std::vector<Case> cases;
    for (const std::string bad : {"\xff", "a\xc3", "\xc0\x80", "\xed\xa0\x80", "\xef\xbf\xbe",
                                  "\xf4\x90\x80\x80", "a\nb", "a\r", "\x01"}) {
        for (const std::string& line :
             {platform + "-template '", platform + "-comment '",
              std::string("-add system -name c -port 1 -addr 10.0.0.1 -comment '"),
              std::string("-update system -name p -comment '")}) {
            cases.push_back({line + bad + "'", 11, kArgError});
        }
    }
    // What looks like an option is the value of the one before it.
    const std::string good = "\t\x7f\xc2\x85\xef\xbf\xbd\xf0\x9f\x98\x80";
    cases.push_back({platform + "-template -name -comment '" + good + "'", 0});
    ExpectRuns(tree, "tqsmgr", cases);
    EXPECT_NE(tree.Read(kMap).find(Prop(12, "Description", good) + Prop(12, "Template", "-name")),
              std::string::npos);
}

static const std::string kUsage = R"(usage: tqsmgr [-f xml_file -h -nonotify web | kfxd] ...
    -add platform 
        -name  platform_name        Name used to identify platform
        -model model_of_machine     Model of the machine
        -addr  ip_address           IP address of TS/NAT device
        -port  port_number          Port that console is connected to
        [-mport   port_number]      Port that is mapped to console
        [-first_ts_port port_number]First terminal server port number
        [-last_ts_port port_number] Last terminal server port number
        [-auth    0 | 1]            Enable authentication on mapped port
        [-enable  0 | 1]            Enable console access
        [-logging 0 | 1]            Enable console logging
        [-events  0 | 1]            Enable event generation
        [-evfile  event_file]       Event Definition File
        [-template template_name]   Template name
        [-comment  comment]         User comments to describe console
    -update platform 
        [-newname  new_platform_name] 
        (any of the "-add" options) 
    -remove platform 
        -name platform_name 
    -add system 
        -name     system_name    Name used to identify console
        -platform platform_name | -addr ip_addr  Platform name or IP address
        -port     port_number    Port that console is connected to
        [-type    system_type]   Name of console's operating system
        [-mport   port_number]   Port that is mapped to console
        [-auth    0 | 1]         Enable authentication on mapped port
        [-enable  0 | 1]         Enable console access
        [-logging 0 | 1]         Enable console logging
        [-events  0 | 1]         Enable event generation
        [-evfile  event_file]    Event Definition File
        [-comment comment]       User comments to describe console
    -update system 
        [-newname new_system_name] 
        (any of the "-add" options, except "-platform") 
    -remove system -name system_name 
    -update cache -platform platform_name 
    -remove cache -platform platform_name 
    -view kfxconf [-name system_name] 
    -write kfxconf 
    -config config_file                    Configuration file name
        -set variable=value|-get variable  Configuration variable name and value
    -security {true | false} 
    -view security 
    -U 
    -V
)";

TEST(Args, ChosenAction) {
    const Tree tree;
    // clang-format off
    ExpectRuns(tree, "tqsmgr", {
        {"-U -security true", 0}, {"-view security", 0, "true\n"}, {"-remove -security false", 0},
        {"-f x -nonotify web -nonotify kfxd -f " + kMap + " -view security", 0, "false\n"},
        {"-view kfxconf -name c -name ''", 0}});
    // Help and version need no map.
    tree.Remove(kMap);
    tree.Remove(kLock);
    ExpectRuns(tree, "tqsmgr", {
        {"-h", 0, kUsage}, {"-h -V", 0, kUsage}, {"-f x -U -h x", 0, kUsage}, {"-add -h", 0, kUsage},
        {"-nonotify web -h", 0, kUsage},
        {"-V | grep -xE 'TQS version \\S+ build date .+' | wc -l", 0, "1\n"},
        {"-update -V | grep -c 'TQS version'", 0, "1\n"}});
    // clang-format on
    EXPECT_FALSE(tree.Exists(kLock));
    tree.WriteMap("", "serial=\"1\"");
    const std::string missing = "Cannot find the \"security\" attribute for SystemMap.";
    ExpectRuns(tree, "tqsmgr", {{"-security true", 21, missing}, {"-view security", 21, missing}});
}
