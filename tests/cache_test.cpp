// Installing a platform's cache from standard input, which may be hostile.
#include <filesystem>
#include <regex>

#include "sample_map.h"

namespace {

const std::string kDeclared = "<?xml version=\"1.0\"?>\n";

std::string Times(size_t n, const std::string& text) {
    return std::regex_replace(std::string(n, '.'), std::regex("[.]"), text);
}

// clang-format off
// Entities e0, e1 ... of "kind" ("" or "% "), each of "factor" times the one before.
std::string Levels(int levels, size_t factor, const std::string& kind, const std::string& first) {
    std::string text = "<!ENTITY " + kind + "e0 \"" + first + "\">";
    for (int i = 1; i < levels; ++i) {
        const std::string before = (kind.empty() ? "&e" : "&#37;e") + std::to_string(i - 1) + ";";
        text += "<!ENTITY " + kind + "e" + std::to_string(i) + " \"" + Times(factor, before) + "\">";
    }
    return text;
}

// The numbers below "n" as the tokens of an enumeration.
std::string Numbers(int n) {
    return n == 1 ? "0" : Numbers(n - 1) + "|" + std::to_string(n - 1);
}

std::string WithDtd(const std::string& more, const std::string& cache) {
    return kDeclared + "<!DOCTYPE Cache [<!ELEMENT Cache ANY><!ELEMENT x EMPTY><!ATTLIST Cache a CDATA #IMPLIED>" + more + "]>" + cache;
}

// Installs the document over an old cache. "result" is the new element, "*" for any, or what the message contains.
void CheckCache(const std::string& document, int code, const std::string& result, const std::string& platform = "lab") {
    SCOPED_TRACE(document.substr(0, 300));
    const auto map = [](const std::string& cache) {
        return MapText(PlatformText("ID=1;Name=lab", ConsoleText(8, "ID=1:2003;Name=c1") + cache) + PlatformText("ID=2;Name=other"), kAttributes);
    };
    const std::string old = "        <Cache/>\n";
    const Tree tree;
    tree.Write(kMap, map(old));
    tree.Write("document", document);
    // A run that opens the fifo hangs.
    const RunResult r = tree.Shell("mkfifo fifo; timeout -s KILL 60 tqsmgr -update cache -platform " + platform + " < document");
    EXPECT_EQ(r.code, code);
    EXPECT_TRUE(code == 0 ? r.err.empty() : r.err.find(result) != std::string::npos) << r.err;
    EXPECT_TRUE(result == "*" || tree.Read(kMap) == map(code == 0 ? result : old)) << tree.Read(kMap);
    EXPECT_EQ(tree.Read(kCalls), code == 0 ? "web\n" : "(none)");
    EXPECT_FALSE(tree.Exists(kKfxConf) || !std::filesystem::is_empty(tree.Path("tmp")));
    EXPECT_EQ(tree.Run({"-view", "security"}).code, 0);
}

TEST(Cache, ReplacesTheOldOneOrIsRefused) {
    const std::string y = "<!ENTITY e \"" + std::string(1024, 'y') + "\">";
    CheckCache(kDeclared + "<Cache b='1' a='&lt;'>text<!-- c --><x><Cache z=\"2\"/></x><![CDATA[<q/>]]><?pi?></Cache><!-- ignored -->", 0,
               "        <Cache b=\"1\" a=\"&lt;\">\n            <!-- c -->\n            <x>\n                <Cache z=\"2\"/>\n            </x>\n        </Cache>\n");
    // A line is dropped from its first zero byte on.
    CheckCache(kDeclared + std::string("<p:Cache xmlns:p='u' p:k='1'>\n\0<b>\n<c/>\0\n</p:Cache>", 51), 0, "        <Cache k=\"1\">\n            <c/>\n        </Cache>\n");
    CheckCache(WithDtd(Levels(10, 10, "", "x") + y, "<Cache a='&e1;&e;'/>"), 0, "        <Cache\n            a=\"xxxxxxxxxx" + std::string(1024, 'y') + "\"/>\n");
    CheckCache(WithDtd("<!ATTLIST x b (" + Numbers(1024) + ") #IMPLIED><!ELEMENT y (#PCDATA|" + Times(1023, "x|") + "x)*>", "<Cache/>"), 0, "        <Cache/>\n");
    CheckCache(WithDtd("<!ELEMENT y ((x|y)*,x" + Times(8, ",(x|y)") + ")>", "<Cache><y>" + Times(9, "<x/>") + "</y></Cache>"), 0, "*");
    CheckCache(kDeclared + "<Cache>" + Times(297, "<a>") + Times(297, "</a>") + "</Cache>", 0, "*");
    CheckCache(kDeclared + "<Cache>" + Times(298, "<a>") + Times(298, "</a>") + "</Cache>", 90, "RVT_Node_Stack::Push(): stack overflow\n");
    CheckCache(kDeclared + "<Cache/>", 1, "tqsmgr: Cannot find Platform \"LAB\".\n", "LAB");
    CheckCache(kDeclared + "<cache><Cache/></cache>", 21, "tqsmgr: Cache not found in XML data.\n", "LAB");
    const std::string xsi = "<Cache xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:";
    const std::pair<std::string, std::vector<std::string>> refused[] = {
        {"rror at file ",
         {"", kDeclared + "<Cache><x></Cache>", kDeclared + "<Cache/><Cache/>", kDeclared + "<Cache a=\"\xff\"/>",
          kDeclared + "<Cache xmlns:p='u' xmlns:q='v'><x p:k='1' q:k='2'/></Cache>", "<?xml version=\"1.1\"?><Cache><a b='&#x1f;'/></Cache>"}},
        {"'xmlns' is not allowed", {kDeclared + "<Cache xmlns:p='u' p:xmlns='v'/>"}},
        {"longer than 1024 characters", {WithDtd(y + "<!ATTLIST x b CDATA '&e;y'>", "<Cache/>"), WithDtd("<!ENTITY e \"" + std::string(1025, 'x') + "\">", "<Cache/>")}},
        {"attribute 'b' has more than 1024 tokens", {WithDtd("<!ATTLIST x b (" + Numbers(1025) + ") #IMPLIED>", "<Cache/>")}},
        {"element 'y' has more than 1024 names",
         {WithDtd("<!ELEMENT y (#PCDATA|" + Times(1024, "x|") + "x)*>", "<Cache/>"), WithDtd("<!ELEMENT y (x)><!ELEMENT y (" + Times(1024, "x,") + "x)>", "<Cache/>")}},
        {"element 'y' is nested too deep", {WithDtd("<!ELEMENT y " + Times(4100, "(") + "x" + Times(4100, ")*") + ">", "<Cache/>")}},
        {"' is not allowed",
         {WithDtd("<!ENTITY e SYSTEM \"fifo\">", "<Cache>&e;</Cache>"), WithDtd("<!ENTITY e SYSTEM \"http://127.0.0.1:9/\">", "<Cache/>"),
          WithDtd("<!ENTITY e SYSTEM \"document\">", "<Cache/>"), WithDtd("<!ENTITY % e SYSTEM \"fifo\">%e;", "<Cache/>"),
          WithDtd("<!NOTATION n SYSTEM \"fifo\">", "<Cache/>"), WithDtd("<!NOTATION n PUBLIC 'n'><!ENTITY e SYSTEM \"fifo\" NDATA n>", "<Cache/>"),
          kDeclared + "<!DOCTYPE Cache SYSTEM \"document\"><Cache/>", kDeclared + xsi + "noNamespaceSchemaLocation=\"fifo\"/>",
          kDeclared + xsi + "schemaLocation=\"u fifo\" xmlns=\"u\"/>"}}};
    for (const auto& [message, documents] : refused) {
        for (const std::string& document : documents) {
            CheckCache(document, 20, message);
        }
    }
    CheckCache("<!-- c --><Cache/>", 21, "tqsmgr: First line must contain a <?xml ...> declaration.\n");
}

// Documents that would grow without end.
TEST(Cache, Explosions) {
    const std::string bomb = Levels(10, 10, "", "x"), y = "<!ENTITY e \"" + std::string(1024, 'y') + "\">";
    for (const auto& [document, message] : std::map<std::string, std::string>{
        {WithDtd(bomb, "<Cache>&e9;</Cache>"), "rror at file "}, {WithDtd(bomb, "<Cache a='&e9;'/>"), "rror at file "},
        {WithDtd(bomb + "<!ATTLIST x b CDATA '&e9;'>", "<Cache/>"), "rror at file "},
        {WithDtd(y, "<Cache>" + Times(60000, "&e;") + "</Cache>"), "rror at file "},
        {WithDtd("<!ELEMENT y ((x|y)*,x" + Times(30, ",(x|y)") + ")>", "<Cache><y><x/></y></Cache>"), "line 0, char 0.\n   out of memory"},
        {WithDtd(Levels(25, 2, "% ", "<!-- -->") + "%e24;", "<Cache/>"), "too many entity expansions"},
        {WithDtd(y + "<!ATTLIST x b CDATA '&e;'>", "<Cache>" + Times(66000, "<x/>") + "</Cache>"), "attribute values grow too large"}}) {
        CheckCache(document, 20, message);
    }
}

// The log's here-document is what a shell must read to feed the same bytes again.
TEST(Cache, InputIsLogged) {
    const std::pair<std::string, std::string> rows[] = {
        {"", "<<EOF\nEOF\n"}, {"<Cache>\nEOF1\n EOF\nEOF2\nEOF \n</Cache>\nEOF", "<<EOF3\n<Cache>\nEOF1\n EOF\nEOF2\nEOF \n</Cache>\nEOF\nEOF3\n"},
        {"<!-- $(touch x) `touch x` \\ $HOME \" -->", "<<EOF\n<!-- \\$(touch x) \\`touch x\\` \\\\ \\$HOME \" -->\nEOF\n"},
        {"<!-- \\n \\\" -->\n", "<<EOF\n<!-- \\n \\\" -->\nEOF\n"},
        {"<!-- \\\n \\n -->\n", "<<EOF\n<!-- \\\\\n \\\\n -->\nEOF\n"},
        {std::string("a\0b\n<Cache/>\\", 13), "<<EOF\na<Cache/>\\\\\nEOF\n"}};
    for (const auto& [input, here_document] : rows) {
        const Tree tree;
        static_cast<void>(tree.Run(Words("-update cache -platform lab"), input));
        const std::string command = "\ntqsmgr -update \"cache\" -platform \"lab\" " + here_document + "\necho ";
        EXPECT_NE(tree.Read(kLog).find(command), std::string::npos) << tree.Read(kLog);
    }
}
// clang-format on

}  // namespace
