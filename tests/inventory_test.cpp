// Commands one after another on one inventory, where tables answer from the second on, against each
// of them alone on the map that the ones before have left.
#include <unistd.h>

#include <xercesc/util/PlatformUtils.hpp>

#include "base/output.h"
#include "commands/actions.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// After the headers whose names it would hide.
#include "random_command.h"

static RVT_XML_Tree Parsed(const std::string& text) {
    RVT_XML_Tree tree;
    EXPECT_TRUE(ParseXMLText(text, "map", tree).ok());
    return tree;
}

static std::string Text(Inventory& inventory) {
    static std::string text;
    static Output out(text);
    text.clear();
    EXPECT_TRUE(PrintTree(out, inventory.Tree()).ok() && out.Flush());
    return text;
}

// Names, addresses and ports, few of each, meet.
static const std::string kRules =
    "T|-add platform -name M -model M100 -addr A -port P|-add system -name M W -port P|"
    "-update K -name N C C|-remove K -name N|V cache -platform N|-update platform -name a C;"
    "W|-platform a|-addr A|-addr A;K|platform|system|system;V|-update|-remove;"
    "C|-newname N|-addr A|-addr A|-port P|-comment 7;A|1.1.1.1|1.1.1.2|1.1.1.3;P|1|2|3;"
    "M|a|b|c|d|e|f|g|h|i|j|k;N|a|a|A|b|c|c|d|e";

TEST(Inventory, LeavesWhatEachCommandAloneWouldLeave) {
    const Tree tree;
    ASSERT_EQ(chdir(tree.Path("").c_str()), 0);
    // Once for all documents, which takes the most time.
    xercesc::XMLPlatformUtils::Initialize();
    const std::string cache = "<?xml version=\"1.0\"?><Cache/>";
    std::mt19937 random(1);
    for (int session = 0; session < 400 && !HasFailure(); ++session) {
        const std::string odd = Split(
            "Port Number=3|Name=~|Name=d|Name=a;Address=~|Port Number=~|ID=~", '|')[random() % 6];
        std::string text = ConsoleText(8, "ID=1:2;Name=c;Port Number=2;" + odd);
        text = PlatformText("ID=1;Name=a;Address=1.1.1.2;Port Number=3", text) +
               ConsoleText(4, "ID=2:4;Name=d;Address=1.1.1.2;Port Number=4");
        text = MapText(text, kAttributes);
        Inventory together, alone;
        together.Tree() = Parsed(text);
        text = Text(together);
        for (int i = 0; i < 25; ++i) {
            const Command command = RandomCommand(random, kRules);
            SCOPED_TRACE(text + std::to_string(static_cast<int>(command.action)) + command.name);
            (alone = {}).Tree() = Parsed(text);
            const Outcome expected = Execute(command, alone, Parsed(cache));
            EXPECT_EQ(Execute(command, together, Parsed(cache)).message(), expected.message());
            text = expected.ok() ? Text(alone) : text;
            EXPECT_TRUE(random() % 3 != 0 || Text(together) == text) << Text(together);
        }
    }
}
