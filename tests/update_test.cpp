// Changing the properties of platforms and consoles.
#include "sample_map.h"

namespace {

// clang-format off
// Two platforms with consoles and two standalone consoles, one of them at an address of its own
// ("alone") and one at lab1's ("near"). The element called "name" has the values "changed".
std::string Inventory(const std::string& name, const std::string& changed) {
    std::map<std::string, std::string> items = {
        {"lab1", "ID=1;Name=lab1;Address=10.0.0.1;Port Number=7001"}, {"c1", "ID=1:2003;Name=c1;Address=10.0.0.1;Port Number=2003"},
        {"c2", "ID=1:2004;Name=c2;Address=10.0.0.1;Port Number=2004"}, {"db", "ID=2:2003;Name=db;Address=10.0.0.2;Port Number=2003"},
        {"lab2", "ID=2;Name=lab2;Address=10.0.0.2;Port Number=7001;Logging Enabled=false;Events Enabled=false"},
        {"alone", "ID=5:2005;Name=alone;Address=10.0.0.3;Port Number=2005;Logging Enabled=false;Events Enabled=false"},
        {"near", "ID=6:2050;Name=near;Address=10.0.0.1;Port Number=2050"}};
    items.at(name) += ";" + changed;
    return PlatformText(items["lab1"], ConsoleText(8, items["c1"]) + ConsoleText(8, items["c2"])) +
           PlatformText(items["lab2"], ConsoleText(8, items["db"])) + ConsoleText(4, items["alone"]) + ConsoleText(4, items["near"]);
}

// "result" is what the changed element has afterwards, or the message, in which "%" stands for the last word of the command.
void CheckUpdate(const std::string& change, int code, const std::string& result) {
    const std::vector<std::string> words = Words(change);
    const bool platform = change[0] == 'l' || change[0] == 'L';
    Check({Inventory("lab1", ""), std::string("-update ") + (platform ? "platform" : "system") + " -name " + change, code,
           code == 0 ? Inventory(words[0], result) : result.find('%') != std::string::npos ? Replaced(result, "%", words.back()) : result});
}

TEST(Update, Changes) {
    const std::string off = "Auth Enabled=false;Logging Enabled=false;Events Enabled=false;Enable=false";
    const std::pair<std::string, std::string> rows[] = {
        {"lab1 -newname core -model x9 -addr 10.0.0.9 -port 7002 -mport 2003 -comment note -template t1 -evfile basic -auth 0 -logging 0 "
         "-events 0 -enable 0 -first_ts_port 3001 -last_ts_port 3016",
         off + ";Name=core;Model=x9;Address=10.0.0.9;Port Number=7002;Mapped Port=2003;Description=note;Template=t1;Event File=basic;"
         "First TS Port=3001;Last TS Port=3016"},
        {"c1 -newname web -type AIX -addr 10.0.0.8 -port 2010 -mport 2004 -comment note -evfile basic -auth 0 -logging 0 -events 0 -enable 0",
         off + ";ID=1:2010;Name=web;Type=AIX;Address=10.0.0.8;Port Number=2010;Mapped Port=2004;Description=note;Event File=basic"},
        {"lab1 -newname lab1 -port 7001", ""}, {"lab2 -addr 10.0.0.2", ""}, {"lab1 -addr 10.0.0.02", "Address=10.0.0.02"},
        {"lab1 -addr 10.0.0.9 -port 2050", "Address=10.0.0.9;Port Number=2050"},
        {"lab2 -events 1 -logging 1", "Events Enabled=true;Logging Enabled=true"},
        {"lab1 -first_ts_port 2008", "First TS Port=2008"}, {"lab1 -last_ts_port 2016", "Last TS Port=2016"},
        {"c1 -port 2004 -port 2011", "ID=1:2011;Port Number=2011"}, {"c1 -port 2010 -port 2003 -addr 10.0.0.1", ""},
        {"c1 -port 7001 -addr 10.0.0.8", "ID=1:7001;Port Number=7001;Address=10.0.0.8"},
        {"alone -port 2007 -addr 10.0.0.1", "ID=5:2007;Port Number=2007;Address=10.0.0.1"}};
    std::for_each(std::begin(rows), std::end(rows), [](const auto& row) { CheckUpdate(row.first, 0, row.second); });
}

TEST(Update, Refusals) {
    const std::string name = " name contains invalid characters.\nUse only alpha-numeric characters, \".\", and \"-\".";
    const struct { int code; std::string message; std::vector<std::string> changes; } rows[] = {
        {1, "Platform \"LAB1\" not found.", {"LAB1 -comment x"}}, {1, "Console \"C1\" not found.", {"C1 -comment x"}},
        {3, "Events cannot be enabled when logging is disabled.",
         {"lab1 -first_ts_port 2009 -logging 0", "lab2 -events 1", "c1 -logging 0 -port 2004", "alone -events 1"}},
        {5, "Duplicate name \"%\".", {"lab1 -newname LAB1", "lab1 -newname core -newname core", "c1 -newname C1", "alone -newname Lab2"}},
        {6, "Duplicate IP address \"%\".", {"lab1 -addr 10.0.0.2", "lab1 -addr 10.0.0.3"}}, {7, "Duplicate port number \"%\".",
         {"lab1 -port 2050", "lab1 -addr 10.0.0.9 -port 2004", "c1 -port 2004", "c1 -port 2050", "c1 -port 7001",
          "c1 -addr 10.0.0.2 -port 7001", "alone -addr 10.0.0.1 -port 7001", "alone -addr 10.0.0.2 -port 2003"}},
        {7, "Duplicate port number \"2050\".", {"lab1 -port 2050 -addr 10.0.0.9"}}, {7, "Duplicate port number \"2003\".", {"c1 -addr 10.0.0.2"}},
        {11, "Invalid or missing argument. Use \"-h\" to display help.", {"lab1 -newname ''", "lab1 -template \xff"}},
        {12, "Invalid IP address \"%\".", {"lab1 -addr 10.0.0.256", "c1 -addr ''"}},
        {13, "Invalid port number \"%\".", {"lab1 -port ''", "lab1 -logging 0 -mport 70a", "c1 -port ''", "c1 -port 2010 -mport x"}},
        {14, "The first and last terminal server port values are out of range. \nThe difference between the values of the first and the last "
             "terminal \nserver port should not be more than 16.", {"lab1 -first_ts_port 2009", "lab1 -last_ts_port 2017", "lab1 -first_ts_port 4294969297"}},
        {17, "The OS type is not in the database.", {"c1 -type mvs", "c1 -type linux\n"}}, {18, "The model is not in the database.", {"lab1 -addr 10.0.0.9 -model M101", "lab1 -model M100\t"}},
        {22, "Platform" + name, {"lab1 -newname a_b"}}, {22, "System" + name, {"c1 -newname a_b"}},
        {26, "Event file \"%\" not found.", {"lab1 -evfile none", "c1 -evfile none"}}};
    for (const auto& row : rows) {
        for (const std::string& change : row.changes) {
            CheckUpdate(change, row.code, row.message);
        }
    }
}

TEST(Update, IncompleteAndOddElements) {
    const std::string usual = "ID=1;Name=lab;Address=10.0.0.1;Port Number=7001;";
    const auto lab = [&](const std::string& inside, const std::string& changes = "") { return PlatformText(usual + changes, inside); };
    const auto console = [](const std::string& port, const std::string& changes = "", const std::string& rest = "") {
        const std::string text = ConsoleText(8, "ID=1:" + port + ";Name=c1;Address=10.0.0.1;Port Number=" + port + ";" + changes);
        return Replaced(text, "        </Console>\n", rest + "        </Console>\n");
    };
    const auto state = [](const std::string& id) { return "            <State ID=\"" + id + ".s\">\n                <a ID=\"" + id +
                                                          "1\"/>\n                <b ID=\"11:2003\"/>\n            </State>\n"; };
    const std::string c1 = console("2003"), bad_id = "Console with port 2003 has bad ID attribute.";
    const std::string no_property = "Cannot find Property \"name=%\" in \"PropertyMap\".";
    for (const MapRun& run : std::initializer_list<MapRun>{
        {lab("", "Template=~"), "platform -name lab -template t", 1, Replaced(no_property, "%", "Template")},
        {Replaced(lab(""), " value=\"M100\"", ""), "platform -name lab -model x9", 1, "Cannot find attribute \"value=\" in \"Property\"."},
        {lab(c1, "Address=~"), "system -name c1 -mport 1", 1, Replaced(no_property, "%", "Address")},
        {lab(console("2003", "ID=~")), "system -name c1 -port 9", 21, "Console with port 2003 has no ID attribute."},
        {lab(console("2003", "ID=1:1:2003")), "system -name c1 -port 9", 21, bad_id},
        {lab(console("2003", "ID=1:02003")), "system -name c1 -port 2003", 21, bad_id},
        {lab(console("2003", "ID=x")), "system -name c1 -addr 10.0.0.1 -mport 0", 0, lab(console("2003", "ID=x"))},
        {lab(console("2003", "", state("1:2003"))), "system -name c1 -port 9", 0, lab(console("9", "", state("1:9")))},
        {lab(console("7001")), "system -name c1 -port 7001 -addr 10.0.0.1", 0, lab(console("7001"))},
        {lab(console("4", "Name=~") + c1), "system -name c1 -port 9", 1, "Console \"c1\" not found."},
        {ConsoleText(4, "ID=5:1;Name=~") + lab(c1), "system -name c1 -port 9", 1, Replaced(no_property, "%", "Name")},
        {lab(c1 + console("5")), "system -name c1 -port 9", 0, lab(console("9") + console("5"))}}) {
        Check({run.before, "-update " + run.command, run.code, run.result});
    }
}
// clang-format on

}  // namespace
