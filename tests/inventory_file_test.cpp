// Inventories in CSV and JSON, wherever a map may stand.
#include <unistd.h>

#include "commands/actions.h"
#include "inventory/completion.h"
#include "plan/difference.h"
#include "report/list.h"

// After the headers whose names it would hide.
#include "random_command.h"

// What is read in a form that "list" does not write, against a map: with both forms of the file,
// the difference to it.
TEST(InventoryFile, NeedNotSayEverything) {
    const Tree tree;
    tree.WriteMap(
        PlatformText("ID=1;Name=lab;Address=1.1.1.1;Port Number=1;Description=x;Template=~",
                     ConsoleText(8, "ID=1:2;Name=db;Address=1.1.1.1;Port Number=2") + "<Cache/>") +
            ConsoleText(4, "ID=2:2;Name=s;Address=1.1.1.2;Port Number=2;Enable=false"),
        R"(serial="9" security="true" version="3.0" odd="1")");
    const struct {
        std::string text, difference;
    } rows[] = {
        {"name,comment\nlab,x\ndb,\ns,", ""},
        {"\xEF\xBB\xBF\r\ncomment,name\r\n\"a,\"\"b\"\"\r\n c\",db\r\n\r\n,lab\r\n\"\",s\r\n",
         "~ platform \"lab\": comment \"x\" -> \"\"\n~ console \"db\": comment \"\" -> "
         "\"a,\\\"b\\\""
         "\\r\\n c\"\n"},
        {"name,enable,template,type,cache,id\ns,FALSE,,Unknown,,7\nlab,True,,,true,\ndb,yes,,"
         "Unknown,,",
         "~ console \"db\": enable \"true\" -> \"yes\"\n"},
        // The platform stands behind its console; a console's own address is no content.
        {"kind,name,platform,addr,port\nconsole,s,lab,9.9.9.9,3\nconsole,db,,1.1.1.3,2\n"
         "console,new,lab,,4\nplatform,lab,,1.1.1.1,1\n",
         "~ console \"db\": platform \"lab\" -> none, addr none -> \"1.1.1.3\"\n"
         "~ console \"s\": platform none -> \"lab\", addr \"1.1.1.2\" -> none, port \"2\" -> "
         "\"3\"\n+ console \"new\": platform \"lab\", port \"4\"\n"},
        {"kind,name,logging\nplatform,lab,true\nconsole,q,false",
         "- console \"db\": platform \"lab\", port \"2\"\n"
         "- console \"s\": addr \"1.1.1.2\", port \"2\", enable \"false\"\n"
         "+ console \"q\": logging \"false\", events \"false\"\n"},
        {" {\"items\": [{\"name\": \"lab\"}, {\"platform\": \"\", \"name\": \"db\"},\n{\"name\": "
         "\"s\", \"comment\": \"\\u00e9\\t\", \"enable\": true}], \"security\": false, \"serial\": "
         "\"7\"}",
         "~ security: \"true\" -> \"false\"\n"
         "~ console \"db\": platform \"lab\" -> none, addr none -> \"1.1.1.1\"\n"
         "~ console \"s\": comment \"\" -> \"é \", enable \"false\" -> \"true\"\n"},
    };
    for (const auto& [text, difference] : rows) {
        tree.Write("new", text);
        const RunResult r = tree.Shell("tqs diff " + kMap + " - <new");
        EXPECT_EQ(r.out + r.err, difference) << text;
        EXPECT_EQ(tree.Shell("tqs diff new " + kMap + " | wc -l").out,
                  std::to_string(std::ranges::count(difference, '\n')) + "\n");
        EXPECT_EQ(tree.Shell("tqs diff new new").code, text.find("kind") == 0 ? 0 : 11);
    }
    // What is inside a standalone console is listed like one.
    EXPECT_EQ(tree.Shell("sed -i 's|^    </Console>|<Console><PropertyMap><Property name=\"Name\" "
                         "value=\"in\"/></PropertyMap></Console>&|' " +
                         kMap + "; for f in csv json; do tqs list --format $f | tqs diff " + kMap +
                         " -; done; tqs list in --format names")
                  .out,
              "in\n");
}

// Places are those of "list --map": a line, or a name.
TEST(InventoryFile, FaultsAreRefusedWithTheirPlace) {
    const Tree tree;
    const std::string item = "{\"items\": [{\"kind\": \"console\", ";
    const std::vector<std::tuple<std::string, int, std::string>> rows = {
        {"", 20, "1: invalid document structure"},
        {"name,Kind", 11, "1: Unknown key \"Kind\". Did you mean \"kind\"?"},
        {"name,\"a\nb\"", 11, "1: Unknown key \"a?b\"."},
        {"kind,name,kind", 11, "1: The key \"kind\" stands there twice."},
        {"kind,port", 11, "1: The key \"name\" is missing."},
        {"name,kind\n\n\"a\n\",b,c\n", 11, "3: The row has 3 fields instead of 2."},
        {"name,kind\na", 11, "2: The row has 1 fields instead of 2."},
        {"name,kind\na,system", 11,
         "2: The kind is \"system\", neither \"platform\" nor \"console\"."},
        {"name,kind\n,platform", 11, "2: The name is missing."},
        {"name,kind\n\"a\n\"\"b\n", 20, "2: A quote is still open at the end of the file."},
        {"name\na\"b", 20, "2: A quote stands within a field, or a text behind a quoted one."},
        {"name\n\"a\" ", 20, "2: A quote stands within a field, or a text behind a quoted one."},
        {"name\na\rb", 20, "2: A carriage return stands without a line feed."},
        {"name\n\"\n\xE9\"", 20, "3: That is no text in UTF-8."},
        {"name\n\n\x1B", 11, "3: A control character stands there that no map can hold."},
        {"name\nlab", 11, "2: The kind of \"lab\" is missing."},
        {"name,kind,model\na,platform,\na,console,\nb,console,M100", 11,
         "4: A console has no model."},
        {"name,kind\na,console\na,platform\na,console", 11, "4: console \"a\" stands there twice."},
        {"name,kind,platform\na,console,b\nb,console,", 11, "2: Its platform \"b\" is not there."},
        {"name,kind,platform\nb,platform,b", 11, "2: A platform has no platform."},
        {"{\"items\":\n[", 20,
         "2: syntax error while parsing value - unexpected end of input; expected '[', '{', or a "
         "literal"},
        {"{}", 11, " The member \"items\" is missing."},
        {"{\"item\": []}", 11, " Unknown key \"item\"."},
        {"{\"items\": [], \"items\": []}", 11, " The key \"items\" stands there twice."},
        {"{\"security\": null, \"items\": []}", 11, " The value of \"security\" is null."},
        {"{\"items\": [[]]}", 11, " An item is an array."},
        {item + "\"port\": 1}]}", 11, "item 1: The value of \"port\" is a number."},
        {item + "\"name\": \"a\", \"port\": true}]}", 11, "a: The value of \"port\" is a boolean."},
        {item + "\"name\": \"a\", \"port\": {\"x\": 1}}]}", 11,
         "a: The value of \"port\" is an object."},
        {item + "\"name\": \"a\", \"prt\": \"1\"}]}", 11,
         "a: Unknown key \"prt\". Did you mean \"port\"?"},
        {item + "\"name\": \"a\", \"name\": \"b\"}]}", 11,
         "a: The key \"name\" stands there twice."},
        {item + "\"name\": \"a\\u0000\"}]}", 11, "item 1: No map can hold the value \"a\\u0000\"."},
        {item + "\"name\": \"\xE9\"}]}", 20,
         "1: syntax error while parsing value - invalid string: ill-formed UTF-8 byte"},
        {item + "\"port\": \"1\"}]}", 11, "item 1: The name is missing."},
        {std::string("{\"items\": []}\n\0{", 16), 20, "2: A zero byte stands there."},
        {std::string("\xFF\xFEn\0", 4), 20, "1: That is no text in UTF-8."},
        {"Lo", 11, "1: Unknown key \"Lo\"."},
        {"{\"items\": []}\n{", 20,
         "2: syntax error while parsing value - unexpected '{'; expected end of input"},
        {std::string(1 << 20, '{'), 20,
         "1: syntax error while parsing object key - unexpected '{'; expected string literal"},
    };
    for (const auto& [text, code, message] : rows) {
        tree.Write("f", text);
        const RunResult r = tree.Shell("tqs export f");
        EXPECT_EQ(r.err, "tqs: f:" + message + "\n") << text.substr(0, 200);
        EXPECT_EQ(std::to_string(r.code) + r.out, std::to_string(code)) << text.substr(0, 200);
    }
}

// What is judged, and where; what the file cannot say is passed over.
TEST(InventoryFile, IsCheckedByWhatItSays) {
    const Tree tree;
    tree.Write("f", "name,kind,addr,enable\r\np,platform,1.1.1,true\r\n\"s\",console,1.1.1.2,on");
    const std::string form = "error: platform p: Invalid IP address \"1.1.1\".\n";
    const std::string on = "error: console s: Enable is \"on\", neither true nor false\n";
    EXPECT_EQ(tree.Shell("tqs check f").out,
              "f:2: " + form + "f:3: " + on + "2 errors, 0 warnings\n");
    EXPECT_EQ(tree.Shell("tqs list --map f --format json >g; tqs check g").out,
              "g:p: " + form + "g:s: " + on + "2 errors, 0 warnings\n");
    EXPECT_EQ(
        tree.Shell("cat g | tqs list --map - --format csv --fields name,kind,addr,enable").out,
        Replaced(tree.Read("f"), "\"s\"", "s") + "\r\n");
    EXPECT_EQ(tree.Shell("mkfifo p; cat f >p & tqs list --map p --format names").out, "p\ns\n");
    tree.Write("f", "name,kind,comment\np,platform,\"a\nb\"\nq,platform,a\tb\nr,platform," +
                        std::string(8186, 'a'));
    EXPECT_EQ(tree.Shell("tqs check f").out,
              "f:2: error: platform p: \"a\\nb\" would not be kept as it is\n"
              "f:5: error: platform r: \"" +
                  std::string(60, 'a') +
                  "\"... would not be kept as it is\n2 errors, 0 warnings\n");
}

// Few names and addresses, values that have to be quoted.
static const std::string kRules =
    "T|-add platform -name N -model M100 -addr A -port P E|-add system -name N W -port P E|"
    "-add system -name N W -port P -type aix|-update K -name N D D|-remove K -name N|-security S;"
    "W|-platform a|-platform b|-addr A;K|platform|system;D|E|-newname N|-port P|-addr A -port P;"
    "E|-comment V|-auth B|-enable B|-logging 0;S|true|false;B|0|1;A|1.1.1.1|1.1.1.2|1.1.1.3;"
    "P|1|2|3|4;N|a|b|c|d|e|f;V|''|a,b|\"q\"|,|é";

static void RunSession(std::mt19937& random, Inventory& inventory) {
    for (size_t length = random() % 40; length > 0; --length) {
        static_cast<void>(Execute(RandomCommand(random, kRules), inventory));
    }
}

TEST(InventoryFile, SaysWhatListWroteFromAnInventory) {
    const Tree tree;
    ASSERT_EQ(chdir(tree.Path("").c_str()), 0);
    std::mt19937 random(1);
    for (int session = 0; session < 60 && !HasFailure(); ++session) {
        Inventory map_before = NewInventory();
        Inventory map_now = NewInventory();
        RunSession(random, map_before);
        RunSession(random, map_now);
        const Outline before = OutlineOf(map_before);
        const Outline now = OutlineOf(map_now);
        for (const auto format : {Listing::Format::kCsv, Listing::Format::kJson}) {
            Listing listing;
            listing.format = format;
            std::string text;
            Output out(text);
            EXPECT_TRUE(List(now, listing, out).empty() && out.Flush());
            Result<InventoryFile> file = ReadInventoryFile(text, "f");
            ASSERT_TRUE(file.ok()) << file.outcome().message() << text;
            for (const Outline* present : {&before, &now}) {
                const Result<Outline> read = Completed(*file, *present, false);
                ASSERT_TRUE(read.ok()) << read.outcome().message() << text;
                for (const Difference& difference : Comparison(*read, now).Differences()) {
                    EXPECT_TRUE(difference.kind == "map" && file->is_csv && present == &before)
                        << TextOf(difference) << text;
                }
            }
            // With all that is not named besides, as a map would keep it.
            InventoryFile map = FileOf(now, "map");
            const Result<Outline> kept = Completed(*file, before, true);
            const Result<Outline> kept_by_map = Completed(map, before, true);
            for (const Difference& difference : Comparison(*kept, *kept_by_map).Differences()) {
                EXPECT_EQ(difference.kind, "map") << TextOf(difference) << text;
            }
            for (const Difference& difference : Comparison(*kept, now).Differences()) {
                EXPECT_TRUE(difference.sign == Sign::kRemoved || difference.kind == "map")
                    << TextOf(difference) << text;
            }
            EXPECT_GE(kept->elements.size(), before.elements.size());
        }
    }
}
