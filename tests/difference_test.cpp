// What differs between two inventories, as text and as data.
#include <nlohmann/json.hpp>

#include "report/difference.h"
#include "xml/rvt_xml_parser.h"

// After the headers whose names it would hide.
#include "sample_map.h"

static void Read(const std::string& text, Inventory& inventory) {
    ASSERT_TRUE(ParseXMLText(text, "map", inventory.Tree()).ok()) << text;
}

static std::string Printed(const Inventory& before, const Inventory& now, Form form) {
    std::string text;
    Output out(text);
    PrintDifferences(Comparison(before, now).Differences(), form, out);
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
