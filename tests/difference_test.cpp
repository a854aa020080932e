// What differs between two inventories, as text, as data and as commands.
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "commands/actions.h"
#include "plan/script.h"
#include "report/difference_form.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// After the headers whose names it would hide.
#include "random_command.h"

static void Read(const std::string& text, Inventory& inventory) {
    ASSERT_TRUE(ParseXMLText(text, "map", inventory.Tree()).ok()) << text;
}

static std::string Printed(const Inventory& before, const Inventory& now, Form form) {
    std::string text;
    Output out(text);
    PrintDifferences(Comparison(OutlineOf(before), OutlineOf(now)).Differences(), form, out);
    EXPECT_TRUE(out.Flush());
    return text;
}

static const std::string kLab = "ID=1;Name=lab;Address=1.1.1.1;Port Number=1";
static const std::string kDb = "ID=1:2;Name=db;Port Number=2;Address=";
static const std::string kCacheText = "<Cache a=\"1\"><!-- x --></Cache>";

TEST(Difference, IsALineForEachElement) {
    const std::string plain = PlatformText(kLab, ConsoleText(8, kDb));
    const struct {
        std::string before, now, text;
    } rows[] = {
        {plain,
         PlatformText("ID=7;Name=lab;Address=1.1.1.1;Port Number=1",
                      ConsoleText(8, Replaced(kDb, "1:2", "7:2") + "9.9.9.9")),
         ""},
        {plain, ConsoleText(4, "ID=3:2;Name=db;Port Number=2;Address=1.1.1.3"),
         "- platform \"lab\": addr \"1.1.1.1\", port \"1\", model \"M100\"\n"
         "~ console \"db\": platform \"lab\" -> none, addr none -> \"1.1.1.3\"\n"},
        {PlatformText(kLab, kCacheText),
         PlatformText(Replaced(kLab, "lab", "new"), kCacheText + ConsoleText(8, kDb)) +
             PlatformText("ID=2;Name=two;Address=1.1.1.2;Port Number=2", kCacheText),
         "~ platform \"lab\": name \"lab\" -> \"new\"\n"
         "+ console \"db\": platform \"new\", port \"2\"\n"
         "+ platform \"two\": addr \"1.1.1.2\", port \"2\", model \"M100\", cache\n"},
        {PlatformText(kLab, kCacheText),
         PlatformText(kLab + ";Description=~",
                      Replaced(kCacheText, "x", "y") + "<State a=\"&#10;\"/>"),
         "~ platform \"lab\": comment \"\" -> none, element \"State\" none -> "
         "\"<State a=\\\"\\n\\\"/>\\n\", cache changed\n"},
    };
    for (const auto& row : rows) {
        Inventory before, now;
        Read(MapText(row.before, kAttributes), before);
        Read(MapText(row.now, kAttributes), now);
        EXPECT_EQ(Printed(before, now, Form::kText), row.text);
        const auto json = nlohmann::json::parse(Printed(before, now, Form::kJson));
        EXPECT_EQ(json.size(), static_cast<size_t>(std::ranges::count(row.text, '\n')));
    }
}

// Names, also in another letter case, addresses and ports, few of each, meet.
static const std::string kRules =
    "T|-add platform -name N -model M100 -addr A -port P -logging B -events B|-add system -name N "
    "W "
    "-port P -type Y|-add system -name N W -port P|-add system -name N W -port P|-update system "
    "-name N C C|-update platform -name N C C|-update system -name N -addr A -port P|-remove K "
    "-name N|V cache -platform N|-security S;W|-platform N|-platform N|-addr A;K|platform|system|"
    "system;V|-update|-update|-remove;C|-newname N|-addr A|-port P|-comment 7|-comment 8|-comment "
    "S|"
    "-logging B|-events "
    "B;Y|aix|linux;S|true|false;B|0|1;A|1.1.1.1|1.1.1.2|1.1.1.3|1.1.1.4;P|1|2|3|4;"
    "N|a|A|b|B|c|C|d|e|f|g";

static std::string TextOf(Inventory& inventory) {
    std::string text;
    Output out(text);
    EXPECT_TRUE(PrintTree(out, inventory.Tree()).ok() && out.Flush());
    return text;
}

// Runs a command alone on the map "text".
static Outcome RunAlone(const Command& command, const std::string& document, std::string& text) {
    Inventory inventory;
    RVT_XML_Tree cache;
    Read(text, inventory);
    EXPECT_TRUE(document.empty() || ParseXMLText(document, "cache", cache).ok());
    Outcome outcome = Execute(command, inventory, cache);
    text = outcome.ok() ? TextOf(inventory) : text;
    return outcome;
}

static void RunSession(std::mt19937& random, size_t length, std::string& text) {
    for (size_t i = 0; i < length; ++i) {
        const std::string cache =
            "<?xml version=\"1.0\"?><Cache a=\"" + std::to_string(random() % 3);
        static_cast<void>(RunAlone(RandomCommand(random, kRules), cache + "\"/>", text));
    }
}

static std::string ScriptText(const std::string& from, const std::string& to) {
    Inventory before, now;
    Read(MapText(from, kAttributes), before);
    Read(MapText(to, kAttributes), now);
    const Script script = ScriptFromTo(before, OutlineOf(now));
    std::string text;
    Output out(text);
    PrintScript(script, out);
    for (const Obstacle& obstacle : script.obstacles) {
        out.Put(obstacle.subject + ": " + obstacle.text + '\n');
    }
    EXPECT_TRUE(out.Flush());
    return text;
}

TEST(Script, GoesRoundOrNamesWhatStandsInTheWay) {
    const Tree tree;
    ASSERT_EQ(chdir(tree.Path("").c_str()), 0);
    const std::string plain = PlatformText(kLab, ConsoleText(8, kDb));
    const std::string unlogged = kLab + ";Logging Enabled=false";
    const std::string alone = "ID=3:2;Name=s;Port Number=2;Address=1.1.1.2";
    const std::string moved = Replaced(kLab, "1.1.1.1", "1.1.1.2");
    const std::string nameless = Replaced(kLab, "lab", "");
    const struct {
        std::string from, to, text;
    } rows[] = {
        {plain, PlatformText(unlogged, ConsoleText(8, kDb) + kCacheText),
         "tqsmgr -remove platform -name \"lab\"\n"
         "tqsmgr -add platform -name \"lab\" -addr \"1.1.1.1\" -port \"1\" -model \"M100\" "
         "-logging \"0\" -events \"1\"\n"
         "tqsmgr -update cache -platform \"lab\" <<EOF\n<?xml version=\"1.0\"?>\n"
         "<Cache a=\"1\">\n    <!-- x -->\n</Cache>\nEOF\n"
         "tqsmgr -add system -name \"db\" -platform \"lab\" -port \"2\"\n"},
        {PlatformText(kLab) + ConsoleText(4, alone), PlatformText(moved) + ConsoleText(4, alone),
         "tqsmgr -update system -name \"s\" -addr \"240.0.0.1\"\n"
         "tqsmgr -update platform -name \"lab\" -addr \"1.1.1.2\"\n"
         "tqsmgr -update system -name \"s\" -addr \"1.1.1.2\"\n"},
        {plain, PlatformText(kLab, ConsoleText(8, "ID=1:1;Name=db;Port Number=1;Address=9.9.9.9")),
         "console \"db\": Duplicate port number \"1\".\n"},
        {plain, Replaced(PlatformText(kLab + ";Description=a~b;Template=~"), "a~b", "a&#9;b"),
         "platform \"lab\": \"a\\tb\" would not be kept as it is\n"
         "platform \"lab\": no command takes away template\n"},
        {plain, PlatformText(kLab + ";Model=M7", ConsoleText(8, kDb + ";Type=vms")),
         "platform \"lab\": model \"M7\": The model is not in the database.\n"
         "console \"db\": type \"vms\": The OS type is not in the database.\n"},
        {PlatformText(kLab + ";Template=~") + ConsoleText(4, alone),
         PlatformText(kLab + ";Template=~"),
         "console \"s\": Cannot find Property \"name=Template\" in \"PropertyMap\".\n"},
        {plain, plain + ConsoleText(4, Replaced(alone, "=s", "=DB")),
         "console \"DB\": Duplicate name \"DB\".\n"},
        {PlatformText(nameless), PlatformText(nameless, ConsoleText(8, kDb)),
         "console \"db\": no command adds to a platform without a name\n"},
        {"", PlatformText(kLab + ";Template=" + std::string(8186, 'x'), "<State/>") + "<State/>",
         "map: no command makes or removes element \"State\"\n"
         "platform \"lab\": \"" +
             std::string(60, 'x') +
             "\"... would not be kept as it is\n"
             "platform \"lab\": no command makes element \"State\"\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ScriptText(row.from, row.to), row.text);
    }
}

TEST(Script, LeadsFromOneInventoryToTheOther) {
    const Tree tree;
    ASSERT_EQ(chdir(tree.Path("").c_str()), 0);
    xercesc::XMLPlatformUtils::Initialize();  // once for all documents, which takes the most time
    std::mt19937 random(1);
    for (int session = 0; session < 200 && !HasFailure(); ++session) {
        std::string from = MapText("", kAttributes);
        RunSession(random, random() % 40, from);
        std::string to = random() % 3 == 0 ? MapText("", kAttributes) : from;
        RunSession(random, random() % 40, to);
        Inventory before, now, after;
        Read(from, before);
        Read(to, now);
        SCOPED_TRACE(from + to + Printed(before, now, Form::kText));
        const Script script = ScriptFromTo(before, OutlineOf(now));
        EXPECT_TRUE(script.obstacles.empty()) << script.obstacles.front().text;
        std::string lines;
        Output out(lines);
        PrintScript(script, out);
        EXPECT_TRUE(out.Flush());
        SCOPED_TRACE(lines);
        while (lines.find("\"\"") != std::string::npos) {
            lines = Replaced(lines, "\"\"", "''");
        }
        std::erase(lines, '"');
        std::istringstream stream(lines);
        for (const Step& step : script.steps) {
            std::string line;
            while (std::getline(stream, line) && !line.starts_with("tqsmgr ")) {
            }
            const Result<Command> command = Parsed(Words(line.substr(7, line.find(" <<") - 7)));
            ASSERT_TRUE(command.ok()) << line;
            const Outcome outcome = RunAlone(*command, step.document, from);
            EXPECT_TRUE(outcome.ok()) << line << outcome.message();
        }
        Read(from, after);
        EXPECT_EQ(Printed(after, now, Form::kText), "");
    }
}
