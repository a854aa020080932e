// The map read and written back: layout, what is dropped, what is refused, encodings.
#include <regex>

#include "fixture.h"

static const std::string kSet = "<SystemMap security=\"true\"";

static std::string Times(size_t count, const std::string& text) {
    return count == 0 ? "" : Times(count - 1, text) + text;
}

static std::string Declared(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n";
}

// What -security true makes of a map. A second run must find nothing to change.
static void ExpectRewritten(const Tree& tree, const std::string& in, const std::string& out) {
    tree.Write(kMap, in);
    ExpectRuns(tree, "tqsmgr -security true; cat", {{kMap, 0, out}, {kMap, 0, out}});
}

TEST(Xml, Rewritten) {
    const Tree tree;
    const std::string many = Times(200, "    <A\n        b=\"" + Times(300, "\xa4\xa2") + "\"/>\n");
    // clang-format off
    const std::map<std::string, std::string> cases = {
        {"<!--a--><?p i?><SystemMap security=''>text<A b='1'>t<?p i?><!--c\n &amp; --><![CDATA[<z/>]]>"
         "<B>x</B></A></SystemMap><!--z-->",
         "<!--a-->\n" + kSet + ">\n    <A b=\"1\">\n        <!--c\n &amp; -->\n        <B/>\n"
         "    </A>\n</SystemMap>\n<!--z-->\n"},
        {"<?xml version='1.0'?>\n<SystemMap security='x'></SystemMap>",
         "<?xml version=\"1.0\"?>\n" + kSet + "/>\n"},
        {"\xef\xbb\xbf<?xml version='1.0' encoding='utf-8' standalone='yes' ?><!DOCTYPE SystemMap ["
         "<!ENTITY e 'v&#38;lt;'><!ELEMENT SystemMap ANY><!ATTLIST SystemMap security CDATA #REQUIRED "
         "a CDATA #IMPLIED>]><SystemMap a='&e;&gt;&quot;&apos;&amp;amp;&#65;&#xe9;é\tx' security='x'/>",
         "<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"yes\"?>\n"
         "<SystemMap a=\"v&lt;&gt;&quot;&apos;&amp;amp;Aéé x\" security=\"true\"/>\n"},
        {"<n:SystemMap xmlns:n='u' n:b='1' security='x'><A xmlns='v'/></n:SystemMap>",
         "<SystemMap b=\"1\" security=\"true\">\n    <A/>\n</SystemMap>\n"},
        {"<?xml version='1.1'?><SystemMap security='' a='&#1;&#x7f;'/>",
         "<?xml version=\"1.1\"?>\n" + kSet + " a=\"&#1;&#127;\"/>\n"},
        {Declared("iso-8859-1") + "<!--\xe9--><SystemMap security='' a='\xe9&#8364;'/>",
         Declared("iso-8859-1") + "<!--\xe9-->\n" + kSet + " a=\"\xe9&#8364;\"/>\n"},
        {Declared("US-ASCII") + "<SystemMap security='' a='&#233;&#128512;'/>",
         Declared("US-ASCII") + kSet + " a=\"&#233;&#128512;\"/>\n"},
        // Where an encoding does not keep a character, or drops it, all are references. In Shift_JIS
        // the backslash is one.
        {Declared("Shift_JIS") + "<!--\x83\x5c--><SystemMap security='' a='\x83\x5c'/>",
         Declared("Shift_JIS") + "<!--\x83\x5c-->\n" + kSet + " a=\"\x83\x5c\"/>\n"},
        {Declared("Shift_JIS") + "<!--\x83\x5c--><SystemMap security='' a='&#165;\x83\x5c&#8722;'/>",
         Declared("Shift_JIS") + "<!--\x83\x5c-->\n" + kSet + " a=\"&#165;&#12477;&#8722;\"/>\n"},
        {Declared("Shift_JIS") + "<SystemMap security='' a='&#92;&#126;'/>",
         Declared("Shift_JIS") + kSet + " a=\"\\~\"/>\n"},
        // More than the parser reads at once, which ends within a character.
        {Declared("EUC-JP") + "<SystemMap security=''>" + many + "</SystemMap>",
         Declared("EUC-JP") + kSet + ">\n" + many + "</SystemMap>\n"},
        {Declared("ISO-8859-1") + "<SystemMap security='' a='\xe9&#917601;\t'/>",
         Declared("ISO-8859-1") + kSet + " a=\"&#233;&#917601; \"/>\n"}};
    // clang-format on
    for (const auto& [in, out] : cases) {
        ExpectRewritten(tree, in, out);
    }
    // clang-format off
    tree.Write(kMap, Declared("UTF-16") + "<SystemMap security='' a='€'/>");
    ExpectRuns(tree, "iconv -f UTF-8 -t UTF-16 <" + kMap + " >u; mv u " + kMap + "; tqsmgr -security true;", {
        {"iconv -f UTF-16 -t UTF-8 " + kMap, 0, Declared("UTF-16") + kSet + " a=\"€\"/>\n"}});
    // clang-format on
    // What comes from the command line is turned as well, but not for kfx.conf.
    tree.Write(kMap, Declared("ISO-8859-1") + "<SystemMap serial='1'/>");
    ExpectRuns(tree, "tqsmgr -add system -name c -addr 10.0.0.1 -port 1", {{"-comment 'é€'", 0}});
    EXPECT_NE(tree.Read(kMap).find("value=\"\xe9&#8364;\""), std::string::npos);
    EXPECT_NE(tree.Read(kKfxConf).find("\"é€\""), std::string::npos);
    ExpectRuns(tree, "tqsmgr", {{"-remove system -name c", 0}});
    EXPECT_EQ(tree.Read(kMap), Declared("ISO-8859-1") + "<SystemMap serial=\"2\">\n</SystemMap>\n");
    // clang-format off
    tree.Write(kMap, Declared("ISO-8859-1") + "<!DOCTYPE SystemMap [<!ELEMENT SystemMap ANY><!ATTLIST SystemMap "
        "security CDATA ''><!ENTITY e '<!--&#8364;-->'>]><SystemMap>&e;</SystemMap>");
    // clang-format on
    const std::string lost = "Cannot write to \"" + kMap + ".tmp\".";
    ExpectRuns(tree, "tqsmgr", {{"-security true", 41, lost}});
    tree.Write(kMap, std::regex_replace(tree.Read(kMap), std::regex("8364"), "917601"));
    ExpectRuns(tree, "tqsmgr", {{"-security true", 41, lost}});
    // The declaration itself would not be found again.
    tree.Write(kMap, Declared("UTF-7") + "<SystemMap security=''/>");
    ExpectRuns(tree, "tqsmgr", {{"-security true", 41, lost}});
    for (const char* encoding : {"EUC-JP", "EUC"}) {
        tree.Write(kMap, Declared(encoding) + "<SystemMap security='' a='\xff'/>");
        ExpectRuns(tree, "tqsmgr -security true 2>error; echo", {{"$?", 0, "20\n"}});
    }
    // Line breaks, which the next read turns into blanks, are no loss.
    // clang-format off
    tree.Write(kMap, Declared("ISO-8859-1") + "<!DOCTYPE SystemMap [<!ELEMENT SystemMap ANY><!ATTLIST SystemMap "
        "security CDATA '' a CDATA ''><!ENTITY e '<!--&#13;-->'>]><SystemMap a='\xe9&#13;&#10;&#13;&#9;'>&e;</SystemMap>");
    ExpectRuns(tree, "tqsmgr -security true; cat", {{kMap, 0, Declared("ISO-8859-1") +
        "<SystemMap a=\"\xe9\r\n\r\t\" security=\"true\">\n    <!--\r-->\n</SystemMap>\n"}});
    // clang-format on
}

// The value of one attribute, alone or behind b="", as it is read and as it is written. Behind the
// name of the element stand 6 columns, so that an attribute which takes up to 71 stays on the line.
// More than any buffer or block of memory holds.
TEST(Xml, LargeMap) {
    const Tree tree;
    std::string inside;
    for (int i = 0; i < 100000; ++i) {
        inside += "    <Platform ID=\"" + std::to_string(i) + "\"/>\n";
    }
    tree.WriteMap(inside);
    ExpectRuns(tree, "tqsmgr", {{"-security true", 0}});
    EXPECT_TRUE(tree.Read(kMap) == MapText(inside, R"(serial="1" security="true" version="3.0")"));
}

TEST(Xml, WrapAndCut) {
    const auto v = [](size_t count) { return std::string(count, 'v'); };
    struct Value {
        std::string in, out;
        bool wraps;
        std::string before = "";
    };
    // clang-format off
    const std::vector<Value> cases = {
        {v(66), v(66), false}, {v(67), v(67), true}, {Times(33, "é") + "v", Times(33, "é") + "v", true},
        {v(61) + "&#38;", v(61) + "&amp;", false}, {v(62) + "&#38;", v(62) + "&amp;", true},
        {v(61), v(61), false, " b=\"\""}, {v(62), v(62), true, " b=\"\""}, {v(8185), v(8185), true},
        {v(8186), v(8185), true}, {v(8184) + "&amp;b", v(8184) + "&amp;", true},
        {v(8183) + "éb", v(8183) + "é", true}, {v(8184) + "éb", v(8184), true},
        {v(8182) + "😀", v(8182), true}};
    // clang-format on
    std::string in, out;
    for (const auto& c : cases) {
        in += "<E" + c.before + " a='" + c.in + "'/>";
        out += "    <E" + c.before + (c.wraps ? "\n       " : "") + " a=\"" + c.out + "\"/>\n";
    }
    ExpectRewritten({}, "<SystemMap security=''>" + in + "</SystemMap>",
                    kSet + ">\n" + out + "</SystemMap>\n");
}

// A schema of the map whose own document type has "declarations".
static std::string SchemaWith(const std::string& declarations) {
    return "<!DOCTYPE x:schema [" + declarations +
           "]><x:schema xmlns:x='http://www.w3.org/2001/XMLSchema'><x:element name='SystemMap'>"
           "<x:complexType><x:attribute name='security'/></x:complexType></x:element></x:schema>";
}

static void ExpectRefused(const Tree& tree, const std::string& map) {
    const std::string before = tree.Read(map);
    const RunResult r = tree.Run({"-f", map, "-security", "true"});
    EXPECT_EQ(r.code, 20) << before;
    EXPECT_TRUE(std::regex_match(
        r.err, std::regex("tqsmgr: [Ee]rror at file [^\n]*, line [0-9]+, char [0-9]+\\.\n   .+\n")))
        << r.err;
    EXPECT_FALSE(tree.Exists(map + ".tmp") || tree.Read(map) != before);
}

TEST(Xml, RefusedMaps) {
    const Tree tree;
    const std::string dtd = "<!DOCTYPE S [<!ELEMENT S ANY><!ATTLIST S a CDATA ''>";
    const std::string xsi =
        "<SystemMap security='' xmlns:x='http://www.w3.org/2001/XMLSchema-instance' x:";
    const std::string any = "<!ELEMENT SystemMap ANY><!ATTLIST SystemMap security CDATA #IMPLIED>";
    EXPECT_EQ(
        tree.Shell("mkfifo fifo; mkdir folder; echo '<!ELEMENT SystemMap EMPTY>' >ok.dtd").err, "");
    tree.Write("any.dtd", any);
    tree.Write("entity.dtd", any + "<!ENTITY % e SYSTEM 'any.dtd'>");
    tree.Write("entity.xsd", SchemaWith("<!ENTITY % e SYSTEM 'any.dtd'>%e;"));
    // clang-format off
    std::vector<std::string> maps = {
        "", "<SystemMap/><SystemMap/>", "<SystemMap a='\xff'/>", "<SystemMap a='' a=''/>",
        "<SystemMap a='&none;'/>", "<SystemMap a='1' xmlns:n='u' n:a='2'/>",
        "<SystemMap xmlns:n='u' n:xmlns='2'/>", "<?xml version=\"1.0'\"?><SystemMap security=''/>",
        dtd + "<!ENTITY e SYSTEM 'http://127.0.0.1:9/x'>]><S>&e;</S>", dtd + "<!ENTITY e SYSTEM 'ok.dtd'>]><S/>",
        dtd + "<!ENTITY % e SYSTEM 'any.dtd'>]><S/>", xsi + "noNamespaceSchemaLocation='entity.xsd'/>",
        xsi + "noNamespaceSchemaLocation='http://127.0.0.1:9/x'/>",
        xsi + "noNamespaceSchemaLocation='none.xsd'/>", xsi + "schemaLocation='u http://127.0.0.1:9/x'/>",
        dtd + "<!ENTITY e '" + Times(1025, "x") + "'>]><S a='&e;'/>",
        dtd + "<!ENTITY a 'x'><!ENTITY b '" + Times(300, "&a;") + "'><!ENTITY c '" +
            Times(300, "&b;") + "'>]><S a='" + Times(300, "&c;") + "'/>"};
    // clang-format on
    // The grammar ok.dtd declares no attribute.
    const std::string url = "file:" + tree.Path("any.dtd");
    for (const std::string& name :
         {std::string("http://127.0.0.1:9/x"), std::string("file://host/etc/passwd"),
          std::string("none.dtd"), std::string("fifo"), std::string("folder"),
          std::string("ok.dtd"), std::string("entity.dtd"), url + "%00", url + "%", url + "%2"}) {
        maps.push_back("<!DOCTYPE SystemMap SYSTEM '" + name + "'><SystemMap security=''/>");
    }
    const std::string whole =
        "<?xml version='1.0'?><!--é--><M xmlns:n='u' n:a='&lt;&#65;'><P/><![CDATA[]]></M>";
    for (size_t length = 0; length < whole.size(); length += length < 40 ? 5 : 2) {
        maps.push_back(whole.substr(0, length));
    }
    for (const std::string& bad : maps) {
        tree.Write("map", bad);
        ExpectRefused(tree, "map");
    }
    // What no command looks at is checked as well.
    tree.WriteMap("<P xmlns:n='u' a='1' n:a='2'/>");
    EXPECT_EQ(tree.Run({"-view", "security"}).code, 20);
    for (const char* path : {"none.xml", "folder", "http://127.0.0.1:9/x"}) {
        ExpectRefused(tree, path);
    }
}

TEST(Xml, LocalGrammarsAndNames) {
    const Tree tree;
    const std::string name = "a b%41#x&\xff\xe9.xml";
    tree.Write("x %41.dtd",
               "<!ENTITY % any 'ANY'><!ELEMENT SystemMap %any;>"
               "<!ATTLIST SystemMap security CDATA #IMPLIED>");
    for (const std::string& dtd :
         {std::string("x %41.dtd"), "file://" + tree.Path("x %2541.dtd"),
          "file://localhost" + tree.Path("x%20%2541.dtd"), "file:" + tree.Path("%78 %2541.dtd")}) {
        tree.Write(name, "<!DOCTYPE SystemMap SYSTEM '" + dtd + "'><SystemMap security=''/>");
        ExpectRuns(tree, "tqsmgr -f '" + name + "' -security true; cat '" + name + "'",
                   {{"", 0, kSet + "/>\n"}});
    }
    tree.Write("x.xsd", SchemaWith("<!ENTITY % e '<!ENTITY f \"\">'>%e;"));
    tree.Write(kMap,
               "<SystemMap xmlns:x='http://www.w3.org/2001/XMLSchema-instance' security='' "
               "x:noNamespaceSchemaLocation='../../../../x.xsd'/>");
    ExpectRuns(tree, "tqsmgr", {{"-security true", 0}});
}

// Of runs with less and less memory, the first that fails.
TEST(Xml, MemoryRunsOut) {
    const Tree tree;
    const RunResult r = tree.Shell(
        "v=120000; while (ulimit -v $v; exec tqsmgr -view security >out); do "
        "v=$((v - 2000)); done");
    EXPECT_EQ(r.err, "tqsmgr: Error at file " + kMap + ", line 0, char 0.\n   out of memory\n");
    EXPECT_NE(tree.Read(kLog).find("# EXIT CODE: 20\n"), std::string::npos) << tree.Read(kLog);
}

TEST(Xml, Depth) {
    const Tree tree;
    for (const size_t n : {299U, 300U}) {
        const std::string e = n == 299 ? "" : "RVT_Node_Stack::Push(): stack overflow";
        tree.WriteMap(Times(n, "<E>") + Times(n, "</E>"));
        ExpectRuns(tree, "tqsmgr",
                   {{"-security true", n == 299 ? 0 : 90, e},
                    {"-view security", n == 299 ? 0 : 90, n == 299 ? "true\n" : e}});
    }
    EXPECT_EQ(tree.Read(kLock), "");
}

TEST(Xml, TheTemporaryMapIsNew) {
    const Tree tree;
    tree.Write("other", "kept");
    ASSERT_EQ(tree.Shell("chgrp " + OtherGroup() + " usr/opt/tqs; ln -s ../../../../other " + kMap +
                         ".tmp")
                  .code,
              0);
    ExpectRuns(tree, "umask 077; tqsmgr -security true; stat -c '%a %g %F'",
               {{kMap, 0, "660 " + OtherGroup() + " regular file\n"}});
    EXPECT_TRUE(tree.Read("other") == "kept" && !tree.Exists(kMap + ".tmp"));
    ASSERT_EQ(tree.Shell("mkdir " + kMap + ".tmp").code, 0);
    ExpectRuns(tree, "tqsmgr", {{"-security false", 40, "Cannot open \"" + kMap + ".tmp\"."}});
}
