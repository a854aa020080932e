// tqs: looking an inventory up and judging it.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "sample_map.h"

namespace {

// A line of CSV for each line of "text", whose fields are parted by "|".
std::string Csv(std::string text) {
    std::ranges::replace(text, '|', ',');
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
        text.replace(at, 1, "\r\n");
    }
    return text;
}

const std::string kHead =
    "kind|name|id|platform|model|type|addr|port|mport|first_ts_port|last_ts_port|auth|enable|"
    "logging|events|evfile|template|comment|cache\n";

// Runs "words" on the map and expects what is printed, and the code.
void ExpectShell(const Tree& tree, const std::string& words, const std::string& out, int code = 0) {
    const RunResult r = tree.Shell(words);
    EXPECT_EQ(r.out, out) << words << "\n" << r.err;
    EXPECT_EQ(r.code, code) << words;
}

}  // namespace

TEST(List, FormatsKeepAllValues) {
    const Tree tree;
    // What a map from elsewhere may hold, in an encoding of its own; a console inside a standalone
    // one has that one's address.
    tree.Write(kMap,
               "<?xml version='1.0' encoding='ISO-8859-1'?><SystemMap serial='12' security='true' "
               "version='3.0'><Platform ID='1'><PropertyMap><Property name='Name' value='\xe9'/>"
               "<Property name='Description' value='a,&quot;b&quot;&#13;&#10;&#x6771;'/>"
               "<Property name='Description' value='second'/><Property name='Enable' value='on'/>"
               "<Property name='Auth Enabled' value='false'/></PropertyMap><Cache/></Platform>"
               "<Console><PropertyMap><Property name='Name' value='s'/><Property name='Address' "
               "value='1.1.1.1'/></PropertyMap><Console><PropertyMap><Property name='Name' "
               "value='\x01'/></PropertyMap></Console></Console></SystemMap>");
    ExpectShell(tree, "tqs list", "", 20);
    EXPECT_EQ(tree.Shell("sed -i 's/\x01/in/' " + kMap).code, 0);
    const auto json = nlohmann::json::parse(tree.Shell("tqs list --format json").out);
    EXPECT_EQ(json, nlohmann::json::parse(R"({"version": "3.0", "serial": "12", "security": true,
        "items": [{"kind": "platform", "name": "é", "id": "1", "comment": "a,\"b\"\r\n東",
                   "enable": "on", "auth": false, "cache": true},
                  {"kind": "console", "name": "s", "addr": "1.1.1.1"},
                  {"kind": "console", "name": "in", "addr": "1.1.1.1"}]})"));
    ExpectShell(
        tree, "tqs list --format csv",
        Csv(kHead + "platform|é|1|||||||||false|on|||||\"a,\"\"b\"\"\n東\"|true\n"
                    "console|s|||||1.1.1.1||||||||||||\nconsole|in|||||1.1.1.1||||||||||||\n"));
    ExpectShell(tree, "tqs list --format names", "é\ns\nin\n");
    ExpectShell(tree, "tqs list",
                "KIND      NAME  ADDR     PORT  PLATFORM  MODEL/TYPE  COMMENT\n"
                "platform  é                                          a,\"b\"??東\n"
                "console   s     1.1.1.1\nconsole   in    1.1.1.1\n");
}

TEST(List, SelectsAndOrders) {
    const Tree tree;
    tree.WriteMap(PlatformText("ID=1;Name=b;Address=10.0.0.2;Port Number=9",
                               ConsoleText(8, "ID=1:1;Name=c;Port Number=1")) +
                  PlatformText("ID=2;Name=a;Address=10.0.0.1;Port Number=10"));
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"", "b\nc\na\n"},
        {"--sort name", "a\nb\nc\n"},
        {"--sort port", "c\na\nb\n"},
        {"a c", "c\na\n"},
        {"--kind console", "c\n"},
        {"--where 'addr=*.2' --where port!=9", "c\n"},
        {"--where 'platform=?'", "c\n"},
        {"--where platform=", "b\na\n"},
        {"-- a", "a\n"},
        {"b --where name=a", ""},
        {"--where comment=a=b", ""}};
    for (const auto& [words, names] : rows) {
        ExpectShell(tree, "tqs list --format names " + words, names);
    }
    ExpectShell(tree, "tqs list --fields port,name b none", "PORT  NAME\n9     b\n", 1);
    ExpectShell(tree, "tqs list --map - <" + kMap + " --format csv --fields id",
                "id\r\n1\r\n1:1\r\n2\r\n");
}

// Each fault is planted into a good map, and found at its line.
TEST(Check, FindsEachFaultAtItsLine) {
    const Tree tree;
    for (const std::string words :
         {"platform -name p -model M100 -addr 10.0.0.1 -port 7001",
          "system -name c1 -platform p -port 2001 -type linux",
          "system -name c2 -platform p -port 2002", "system -name s -addr 10.0.0.2 -port 2002",
          "platform -name q -model X9 -addr 10.0.0.3 -port 7001"}) {
        ExpectRuns(tree, "tqsmgr", {{"-add " + words, 0}});
    }
    ExpectShell(tree, "tqs check", "0 errors, 0 warnings\n");
    const std::string good = tree.Read(kMap);
    const struct {
        std::string from, to, text, earlier = "";
    } faults[] = {
        {"value=\"c2\"", "value=\"C1\"", "error: console C1: the name is in use by c1",
         "value=\"c1\""},
        {"value=\"c2\"", "value=\"c_2\"",
         "error: console c_2: System name contains invalid characters. Use only alpha-numeric "
         "characters, \".\", and \"-\"."},
        {"value=\"10.0.0.3\"", "value=\"10.0.0.1\"",
         "error: platform q: address 10.0.0.1 is in use by p", "value=\"10.0.0.1\""},
        {"value=\"10.0.0.3\"", "value=\"10.0.0.2\"",
         "warning: platform q: address 10.0.0.2 is in use by s", "value=\"10.0.0.2\""},
        {"value=\"10.0.0.3\"", "value=\"10.0.3\"",
         "error: platform q: Invalid IP address \"10.0.3\"."},
        {"value=\"M100\"", "value=\"M1\"", "error: platform p: The model is not in the database."},
        {"value=\"2008\"", "value=\"2017\"",
         "error: platform p: The first and last terminal server port values are out of range.  The "
         "difference between the values of the first and the last terminal  server port should not "
         "be more than 16."},
        {"name=\"Mapped Port\" readonly=\"false\" value=\"0\"",
         "name=\"Mapped Port\" readonly=\"false\" value=\"\"",
         "error: platform p: Invalid port number \"\"."},
        {"name=\"Enable\" readonly=\"false\" value=\"true\"",
         "name=\"Enable\" readonly=\"false\" value=\"yes\"",
         "error: platform p: Enable is \"yes\", neither true nor false"},
        {"name=\"Event File\" readonly=\"false\" value=\"\"",
         "name=\"Event File\" readonly=\"false\" value=\"x\"",
         "error: platform p: Event file \"x\" not found."},
        {"name=\"Logging Enabled\" readonly=\"false\" value=\"true\"",
         "name=\"Logging Enabled\" readonly=\"false\" value=\"false\"",
         "warning: platform p: Events cannot be enabled when logging is disabled."},
        {"ID=\"1:2001\"", "ID=\"1:2003\"",
         "error: console c1: identifier \"1:2003\" is not of its form, or not below the serial"},
        {"ID=\"1:2001.pmap\"", "ID=\"x\"",
         "error: console c1: the property map's identifier is not 1:2001.pmap"},
        {"security=\"false\"", "security=\"no\"", "error: map: security is \"no\""},
        {"serial=\"4\"", "serial=\"x\"",
         "error: map: File does not contain a valid serial number."},
        {"version=\"3.0\"", "", "error: map: Cannot find the \"version\" attribute for SystemMap."},
        {"name=\"Template\"", "name=\"Name\"", "error: platform p: property \"Name\" twice",
         "name=\"Name\""},
        {"name=\"Template\"", "name=\"Type\"",
         "error: platform p: property \"Type\" does not belong here"}};
    const auto line_of = [&good](const std::string& text) {
        return std::to_string(1 + std::count(good.begin(),
                                             good.begin() + static_cast<ptrdiff_t>(good.find(text)),
                                             '\n'));
    };
    for (const auto& [from, to, text, earlier] : faults) {
        tree.Write("bad.xml", Replaced(good, from, to));
        const std::string found = "bad.xml:" + line_of(from) + ": " + text +
                                  (earlier.empty() ? "" : " (line " + line_of(earlier) + ")") +
                                  "\n";
        const RunResult r = tree.Shell("tqs check bad.xml");
        EXPECT_NE(r.out.find(found), std::string::npos) << found << r.out;
        EXPECT_EQ(r.code, text[0] == 'e' ? 1 : 0) << text;
    }
    // kfx.conf belongs to the product's map alone.
    ExpectShell(tree, "echo >>" + kKfxConf + "; cp " + kMap + " copy; tqs check copy",
                "0 errors, 0 warnings\n");
    ExpectShell(tree, "ln -s " + kMap + " link; tqs check link",
                "link:2: error: " + kKfxConf + " is not what the map gives\n1 errors, 0 warnings\n",
                1);
}

TEST(Tqs, RefusesWithOneLine) {
    const Tree tree;
    tree.Write("cut", "<SystemMap>\n<Platform>");
    tree.Write("other", "<a/>");
    const std::vector<std::tuple<std::string, int, std::string>> rows = {
        {"", 11, "A command is missing. See \"tqs --help\"."},
        {"lst", 11, "Unknown command \"lst\". Did you mean \"list\"?"},
        {"list --frmat csv", 11, "Unknown option \"--frmat\". Did you mean \"--format\"?"},
        {"list --fields nane", 11, "Unknown key \"nane\". Did you mean \"name\"?"},
        {"list --kind system", 11, "Unknown kind \"system\"."},
        {"list --where name", 11, "\"name\" is not of the form KEY=GLOB."},
        {"list --format names --fields name", 11, "--format names takes no --fields."},
        {"check a b", 11, "Nothing is expected behind \"check\" but \"b\" stands there."},
        {"check none", 20, "none: No such file or directory"},
        {"check cut", 20,
         "cut:2: input ended before all started tags were ended; last tag started is 'Platform'"},
        {"check other", 21, "other: Cannot find SystemMap element."},
        {"list --map - </dev/null", 20, "standard input:1: invalid document structure"},
        {"list >/dev/full", 41, "Write failed for \"standard output\"."},
        {"list >&-", 41, "Write failed for \"standard output\"."}};
    for (const auto& [words, code, message] : rows) {
        const RunResult r = tree.Shell("tqs " + words);
        EXPECT_EQ(r.err, "tqs: " + message + "\n");
        EXPECT_EQ(std::to_string(r.code) + r.out, std::to_string(code)) << words;
    }
    ExpectShell(tree, "{ sleep 0.05; tqs list; echo $? >&3; } 3>code | :; cat code", "41\n");
    EXPECT_EQ(tree.Shell("tqs --help && tqs list --help && tqs --version").err, "");
    EXPECT_FALSE(tree.Exists(kLog) || tree.Exists(kLock));
}

// A session's map against the empty one it began with: code, text, and commands that a shell runs.
TEST(Tqs, DiffsAndExports) {
    const Tree tree;
    ExpectRuns(tree, "cp " + kMap + " empty; tqsmgr",
               {{"-add system -name s -addr 10.0.0.2 -port 1 -comment \\$x", 0}});
    ExpectShell(tree, "tqs diff empty - <empty; echo $?; tqs diff --json --commands empty empty",
                "0\n", 11);
    ExpectShell(tree, "tqs diff empty " + kMap + " | cut -c1-13", "+ console \"s\"\n");
    ExpectShell(
        tree, "tqs diff --commands empty " + kMap + " >script; echo $?; tqs export | cmp - script",
        "1\n");
    ExpectShell(tree, "cp " + kMap + " new; cp empty " + kMap + "; sh script; cmp " + kMap + " new",
                "");
    ExpectShell(tree, "tqs diff - - <new", "", 11);
    EXPECT_EQ(tree.Shell("sed -i 's/<System/<!-- x --><System/; s/ID=\"1:1\"/ID=\"1:1\" "
                         "odd=\"1\"/' new; tqs export new")
                  .code,
              21);
}
