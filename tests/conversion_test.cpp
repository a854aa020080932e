// Maps of earlier formats brought to the current one.
#include "model/conversion.h"

#include <strings.h>

#include <random>
#include <regex>

#include "base/output.h"
#include "model/lookups.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// After the headers whose names it would hide.
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

// The plain definitions of merging and renaming, which look at the whole map for every platform.
struct Item {
    std::string tag, id, name, address;  // "~" for none
    std::vector<Item> children = {};
    bool deleted = false;
};

std::string Text(const Item& item, size_t depth) {
    std::string inside;
    for (const Item& child : item.children) {
        inside += child.deleted ? "" : Text(child, depth + 4);
    }
    const std::string values = "ID=" + item.id + ";Name=" + item.name + ";Address=" + item.address;
    if (depth == 0) {
        return "<SystemMap>\n" + inside + "</SystemMap>\n";
    }
    const std::string text = ElementText(depth, item.tag, values, inside);
    if (item.name != "~" || item.address != "~") {
        return text;
    }
    // Without name and address there is no property map at all.
    const std::regex no_map(" *<PropertyMap [^>]*>\n *</PropertyMap>\n"), empty("(<" + item.tag + " [^>]*)>\n *</" + item.tag + ">");
    return std::regex_replace(std::regex_replace(text, no_map, ""), empty, "$1/>");
}

void PlainMerge(Item& map) {
    for (Item& p : map.children) {
        for (Item& q : map.children) {
            if (&q == &p || p.tag != "Platform" || q.tag != "Platform" || p.deleted || q.deleted || p.address == "~" || p.address != q.address) {
                continue;
            }
            for (Item& child : q.children) {
                child.id = child.id.rfind(q.id, 0) == 0 ? p.id + child.id.substr(q.id.size()) : child.id;
                p.children.insert(p.children.end(), child.tag == "Console" ? 1 : 0, child);
            }
            q = {q.tag, q.id, q.name, q.address, {}, true};
        }
    }
}

int PlainCount(const Item& item, const std::string& name) {
    int count = strcasecmp(item.name.c_str(), name.c_str()) == 0 ? 1 : 0;
    for (const Item& child : item.children) {
        // A platform without a name is passed over with its consoles.
        const bool passed_over = child.tag == "Cache" || (child.tag == "Platform" && child.name == "~");
        count += passed_over ? 0 : PlainCount(child, name);
    }
    return count;
}

// The code: 1 at the first platform without a name.
int PlainRename(Item& map) {
    for (Item& platform : map.children) {
        std::string name = platform.name;
        if (platform.tag == "Platform" && name == "~") {
            return 1;
        }
        const bool renamed = platform.tag == "Platform" && PlainCount(map, name) != 1;
        while (renamed && (name == platform.name || PlainCount(map, name) != 0)) {
            name = "P-" + name;
        }
        platform.name = name;
    }
    return 0;
}

// Few names and addresses, so that they meet, but too few elements for a line that wraps.
Item RandomItem(std::mt19937& random, const std::string& tag) {
    const auto pick = [&random](const std::vector<const char*>& texts) { return texts[random() % texts.size()]; };
    Item item = {tag, pick({"1", "2", "12", "2:1"}), pick({"a", "A", "b", "c", "d", "P-a", "p-A", "P-b", "", random() % 4 == 0 ? "~" : "e"}), pick({"1", "2", "3", "1 ", "", "~"})};
    while (tag == "Platform" && random() % 2 == 0) {
        item.children.push_back(RandomItem(random, random() % 5 == 0 ? "Cache" : "Console"));
    }
    return item;
}

TEST(Conversion, AgreesWithThePlainDefinition) {
    std::mt19937 random(1);
    std::string text;
    int complete = 0;
    int failed = 0;
    Output out(text);
    for (int i = 0; i < 2000 && !HasFailure(); ++i) {
        Item map = {"SystemMap", "", "root", ""};
        for (size_t n = 1 + random() % 6; n > 0; --n) {
            map.children.push_back(RandomItem(random, random() % 6 == 0 ? "Console" : "Platform"));
        }
        const std::string before = Text(map, 0);
        RVT_XML_Tree tree;
        ASSERT_EQ(ParseXMLText(before, "map", &tree), 0);
        const RVT_Node& root = *FindSystemMap(tree);
        PlainMerge(map);
        const int code = PlainRename(map);
        ASSERT_EQ(Number(GroupPlatformsWithDupIPAddr(root).code()) + Number(ModifyDuplicatePlatformNames(root).code()), code) << before;
        (code == 0 ? complete : failed) += 1;
        text.clear();
        EXPECT_TRUE(PrintTree(out, &tree) == ExitCode::kOk && out.Flush());
        // After a failure the tree is never seen.
        EXPECT_TRUE(code != 0 || text == Text(map, 0)) << before << text;
    }
    EXPECT_TRUE(complete > 1000 && failed > 50) << complete << ' ' << failed;
}
// clang-format on

}  // namespace
