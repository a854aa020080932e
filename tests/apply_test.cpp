// tqs apply: what a change script is, and that one run of it leaves what a shell would.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <regex>

#include "translog/change_script.h"

// After the headers whose names it would hide.
#include "random_command.h"

namespace {

// "[word][word]|input" for each command, then "line: fault" for each fault, a line each.
std::string Meaning(const std::string& text) {
    const ChangeScript script = ReadChangeScript(text);
    std::string meaning;
    for (const ScriptCommand& command : script.commands) {
        for (const char* word : command.words.subspan(1)) {
            meaning += std::string("[") + word + "]";
        }
        meaning += "|" + std::string(command.input.value_or("")) + "\n";
    }
    for (const ScriptFault& fault : script.faults) {
        meaning += std::to_string(fault.line) + ": " + fault.text + "\n";
    }
    return meaning;
}

const std::string kEcho = "echo \"Recorded Exit Code = 12, This Exit Code = $?\"\n";

}  // namespace

TEST(ChangeScript, ReadsPlainWordsAlone) {
    const struct {
        std::string text, meaning;
    } rows[] = {
        {"#$x\n\n \t # y\ntqsmgr a 'b c'\"d\\\"\\$\\\\\\e\"\\ f#g # h", "[a][b cd\"$\\\\e f#g]|\n"},
        {"x/tqsmgr '' \\\n  a\\\nb \"c\\\nd\ne\" 'f\\\ng'\n" + kEcho + "'tqsmgr'",
         "[][ab][cd\ne][f\\\ng]|\n|\n"},
        {"tqsmgr <<EOF a # b\n'\"#\\$\\`\\\\\\a\\\nb\nEOF x\nEOF\ntqsmgr << 'E'\"F\"\n$\\\n`\nEF\n",
         "[a]|'\"#$`\\\\ab\nEOF x\n\n|$\\\n`\n\n"},
        {"tqsmgr <<\\E\nE", "|\n"},
        {"ls\ntqsmgr a$b\ntqsmgr `\ntqsmgr *\ntqsmgr a~\ntqsmgr a;b\ntqsmgr \"$\"\ntqsmgr >a\n"
         "tqsmgr \"\r\"\r",
         "1: no tqsmgr command\n2: \"$\" outside quotes\n3: \"`\" outside quotes\n"
         "4: \"*\" outside quotes\n5: \"~\" outside quotes\n6: \";\" outside quotes\n"
         "7: \"$\" without a backslash\n8: \">\" outside quotes\n"
         "9: a carriage return outside quotes\n"},
        {"a=x/tqsmgr\n'a'=x/tqsmgr\ntqsmgr\\\n \\\n <a\ntqsmgr <<-E\nE\ntqsmgr 2<<E\nE\n<<E\nE\n"
         " " +
             kEcho + Replaced(kEcho, "This", "That"),
         "|\n1: an assignment\n3: \"<\" that begins no here-document\n"
         "6: a here-document with \"<<-\"\n8: \"<\" for a descriptor\n10: no tqsmgr command\n"
         "12: \"$\" without a backslash\n13: \"$\" without a backslash\n"},
        {"tqsmgr <<A <<B\nB\ntqsmgr <<\nA\ntqsmgr <<E\n\n$x\nE\ntqsmgr <<E\na\\\nE\n\\\nE\nE",
         "1: a second here-document\n3: a here-document without a delimiter\n4: no tqsmgr command\n"
         "7: \"$\" without a backslash\n12: lines that make the delimiter together\n"},
        {"tqsmgr {} {a} a,} {a, {a\\,b} \\{a,b} {1.3}\n",
         "[{}][{a}][a,}][{a,][{a,b}][{a,b}][{1.3}]|\n"},
        {"tqsmgr {a,b}\ntqsmgr -a{\"b\",'}'}\ntqsmgr {1.\\\n.3}\n",
         "1: \"{\" outside quotes\n2: \"{\" outside quotes\n3: \"{\" outside quotes\n"},
        {"tqsmgr <<E\n$x", "2: \"$\" without a backslash\n"},
        {"tqsmgr <<E\nx", "1: a here-document without its end\n"},
        {"\ntqsmgr a 'b\n", "2: an open quote\n"},
        {"tqsmgr \\", "1: a backslash at the end\n"},
        {"tqsmgr\n#" + std::string(1, '\0'), "2: a zero byte\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Meaning(row.text), row.meaning) << row.text;
    }
}

TEST(ChangeScript, MeansTheSameToAShell) {
    const Tree tree;
    std::mt19937 random(1);
    const std::string rules =
        "T|tqsmgr~W~W<<E\nL\nE\n|tqsmgr~W~W~#W\n;W|X|XX|XXX|W~X|~;L|M|M\nM|#M\n;M|YY|YY|YYY|\\\\;"
        "X|a|Y|'Y'|\"Y\"|'|\"|\\\n|#|{|,|..|=|}|\\~|\\a|\\\"|$;Y|\\\\|'|\"|\\$|\\`|\\\n|a|\\a|E|*|<"
        "|#|~|"
        "\\";
    std::string together, meaning;
    for (int accepted = 0; accepted < 300;) {
        std::string text = "T";
        for (const std::string& rule : Split(rules, ';')) {
            const std::vector<std::string> texts = Split(rule, '|');
            std::string next;
            for (const char c : text) {
                next +=
                    c == texts[0][0] ? texts[1 + random() % (texts.size() - 1)] : std::string(1, c);
            }
            text = next;
        }
        std::ranges::replace(text, '~', ' ');
        const ChangeScript script = ReadChangeScript(text + "\n");
        if (script.faults.empty()) {
            together += text + "\n";
            meaning += Meaning(text + "\n");
            ++accepted;
        }
    }
    tree.Write(
        "script",
        "tqsmgr() { for w; do printf '[%s]' \"$w\"; done; printf '|'; cat; echo; }\n" + together);
    EXPECT_TRUE(tree.Shell("sh script < /dev/null").out == meaning);
    EXPECT_TRUE(tree.Shell("bash script < /dev/null").out == meaning);
}

namespace {

const std::string kSpaces = "&#9;&#13;&#10;";
// A value that is cut behind these when more follows, but for the end of it.
const std::string kCut = std::string(8184, 'x');

// The map and kfx.conf, and with values as they would be read.
std::string FilesOf(const Tree& tree) {
    return tree.Read(kMap) + tree.Read(kKfxConf);
}
std::string AsRead(std::string files) {
    for (size_t at = 0; (at = files.find(kCut + "é", at)) != std::string::npos;) {
        files.erase(at += kCut.size(), 2);
    }
    return std::regex_replace(files, std::regex("\r\n|\t"), " ");
}

// The log, but for times and the names of temporary files.
std::string LogOf(const Tree& tree) {
    const std::regex vague("# Time: .*|tmp/tqsmgr\\.\\w{6}|standard input|script");
    return std::regex_replace(tree.Read(kLog), vague, "");
}

// Names, addresses, ports and values of every kind, few of each, meet; "~" is a tab, "_" a blank.
const std::string kRules =
    "T|-add platform -name M -model M100 -addr A -port P C|-add system -name M W -port P -type Y C|"
    "-add system -name M -platform a -port P|-update system -name N C D|-update platform -name N C "
    "D|"
    "-remove K -name N|-update cache -platform N U|-update cache -platform a U|-remove cache "
    "-platform N|-security true|-write kfxconf|-remove sytem;"
    "W|-platform a|-addr A;K|platform|system;D|-newname M|-addr A|-port P|-auth 0|-port P;"
    "C|-comment V|-comment V|-template V|-events 1 -logging 0;Y|aix|linux|vms;A|1.1.1.1|1.1.1.2;"
    "P|1|2|3;V|\"a~b\"|'$x_\"y\"'|\\`é|LONG|'<&\\'|\"it's\";M|a|b|c|d|e|f;N|a|a|A|b|c|d;"
    "U|<<'E'\n<?xml_version=\"1.0\"?>\n<Cache_a=\"~$^\"/>\nE|<<E\n<?xml_version=\"1.0\"?>\n<Cache>"
    "<!--é\\$\\\\--></Cache>\nE|<<E\n<?xml_version=\"1.0\"?>\n<Cache><!--€--></"
    "Cache>\nE|<<E\n<Cache\nE";

std::string RandomScript(std::mt19937& random) {
    std::string script;
    for (size_t i = 0; i < 4 + random() % 12; ++i) {
        std::string line = "T";
        for (const std::string& rule : Split(kRules, ';')) {
            const std::vector<std::string> texts = Split(rule, '|');
            for (const std::string& word : Words(std::exchange(line, ""))) {
                line += (word == texts[0] ? texts[1 + random() % (texts.size() - 1)] : word) + ' ';
            }
        }
        if (const size_t at = line.find("LONG"); at != std::string::npos) {
            line.replace(at, 4, kCut + "é");
        }
        // Nothing stands behind the end of a here-document.
        line.erase(line.find_last_not_of(' ') + 1);
        script += "tqsmgr " + line + "\n";
    }
    std::ranges::replace(script, '~', '\t');
    std::ranges::replace(script, '_', ' ');
    return std::regex_replace(script, std::regex("\\^"), kSpaces);
}

}  // namespace

// A map whose last console has these values, the third of which may be of any kind.
static std::string OddMap(const std::string& values) {
    const std::string map =
        MapText(PlatformText("ID=1;Name=a;Address=1.1.1.1;Port Number=1",
                             ConsoleText(8, "ID=1:2;Name=c;Port Number=2")) +
                    ConsoleText(4, "ID=2:1;Name=e;Address=1.1.1.2;Port Number=1;" + values),
                kAttributes);
    return std::regex_replace(map, std::regex("\\^"), kSpaces);
}

// Runs a script on a map by a shell and at once, passing over what is refused. The same must be
// left, but for values that nobody has read since the shell's last command gave them; and kfx.conf,
// where there is one, is what the map gives. Returns the exit code of the one run.
static int Compare(const std::string& script, const std::string& map) {
    SCOPED_TRACE(script + map);
    const Tree by_shell, at_once;
    for (const Tree* tree : {&by_shell, &at_once}) {
        tree->Write(kMap, map);
        tree->Write("script", script);
    }
    static_cast<void>(by_shell.Shell("sh script"));
    const int code = at_once.Shell("tqs apply --keep-going script").code;
    const bool is_changed = at_once.Read(kMap) != map;
    EXPECT_EQ(FilesOf(at_once), is_changed ? AsRead(FilesOf(by_shell)) : FilesOf(by_shell));
    EXPECT_EQ(LogOf(at_once), LogOf(by_shell));
    if (at_once.Exists(kKfxConf)) {
        EXPECT_EQ(at_once.Shell("sed '/^#/d' " + kKfxConf).out,
                  at_once.Shell("tqsmgr -view kfxconf").out);
    }
    return code;
}

TEST(Apply, LeavesWhatAShellLeaves) {
    std::mt19937 random(1);
    for (int session = 0; session < 20 && !HasFailure(); ++session) {
        const std::string script = RandomScript(random);
        const std::string odd =
            Split("Name=d|Name=d^|Name=~|Port Number=~|Description=^", '|')[random() % 5];
        std::string map = OddMap(odd);
        if (random() % 3 == 0) {
            map = Replaced(map, "UTF-8", "ISO-8859-1");
        }
        const int code = Compare(script, map);
        // Some are refused; the whole is, then, without the option.
        const Tree tree;
        tree.Write(kMap, map);
        tree.Write("script", script);
        EXPECT_EQ(tree.Shell("tqs apply - < script").code == 0, code == 0);
        EXPECT_TRUE(code == 0 || (tree.Read(kMap) == map && !tree.Exists(kKfxConf)));
    }
}

TEST(Apply, GivesWhatIsReadOfAValue) {
    const std::string cache =
        " <<E\n<?xml version=\"1.0\"?>\n<Cache a=\"x" + kSpaces + "y\"/>\nE\n";
    const std::string digits(9000, '7');
    const std::string update = "tqsmgr -update system -name ";
    const std::string write = "tqsmgr -write kfxconf\n";
    const struct {
        std::string odd, script;
    } rows[] = {
        {"Description=^", "tqsmgr -update cache -platform a" + cache + write},
        {"Description=^", "tqsmgr -update cache -platform a" + cache + "tqsmgr -security true\n"},
        {"Description=^", write},
        {"Description=" + kCut + "é", "tqsmgr -security true\n" + write},
        // The first finds the name in the file, the others what was read of it.
        {"Name=e^", "tqsmgr -remove system -name 'e\t\r\n'\n"},
        {"Name=e^", write + write +
                        "tqsmgr -security true\ntqsmgr -remove system -name 'e\t\r\n'\n" + update +
                        "'e  ' -newname f\n" + write},
        // What was stored before the refusal is taken back.
        {"Name=e", update + "e -newname f -comment x -port 7 -mport a\n" + update +
                       "f -comment y\n" + update + "e -port 3\n"},
        // A name that is cut may be one that another has, and its identifier is cut as well.
        {"Name=" + kCut + "x", update + "c -newname " + kCut + "xy\n" + update + kCut +
                                   "x -port 9\n" + update + "c -port 8\n" + write},
        {"Name=e", "tqsmgr -security true\n" + update + "c -port " + digits + "\n" + update +
                       "c -port " + digits + "\n" + update + "c -port 2\n" + write},
    };
    for (const auto& row : rows) {
        Compare(row.script, OddMap(row.odd));
    }
}

// A map in which a name stands twice has no tables: making them for each command would take more
// time and memory with each one.
TEST(Apply, TakesManyCommandsOnAnIrregularMap) {
    const Tree tree;
    std::string map, script;
    for (int i = 0; i < 1000; ++i) {
        const std::string number = std::to_string(i % 999);
        map += ConsoleText(
            4, "ID=" + number + ":1;Name=c" + number + ";Address=1.1.1.1;Port Number=" + number);
    }
    for (int i = 0; i < 3000; ++i) {
        script += "tqsmgr -update system -name c9 -comment '" + std::to_string(i) + "\t'\n";
    }
    tree.Write(kMap, MapText(map, kAttributes));
    tree.Write("script", script);
    EXPECT_EQ(tree.Shell("ulimit -v 100000; tqs apply script").code, 0);
}

namespace {

const std::string kLab = "tqsmgr -add platform -name lab -model M100 -addr 1.1.1.1 -port 1\n";
const std::string kDb = "tqsmgr -nonotify web -add system -name db -platform lab -port 2\n";

}  // namespace

TEST(Apply, RefusesTheWholeOrPassesOver) {
    const std::string map = "--map usr/opt/tqs/config/SystemMap.xml ";
    const struct {
        std::string options, script;
        int code;
        std::string err;       // without "tqs: standard input:"
        std::string comments;  // of the one entry; empty for none
    } rows[] = {
        {"", kLab + "tqsmgr -remove system -name no\n", 1, "2: Console \"no\" not found.\n",
         "# Line 2 refused, nothing changed.\n\n# EXIT CODE: 1\n# ERROR MESSAGE:\n"
         "#   Console \"no\" not found.\n\n"},
        {"", "tqsmgr -remove cache -platform no", 1, "1: refused with code 1\n",
         "# Line 1 refused, nothing changed.\n\n# EXIT CODE: 1\n# ERROR MESSAGE:\n#   \n\n"},
        {"", kLab + "\ntqsmgr -update cache -platform lab <<E\n<a\nE\n", 20,
         "3: Error at file standard input, line 2, char 1.    unexpected end of input\n",
         "# Line 3 refused, nothing changed.\n\n# EXIT CODE: 20\n# ERROR MESSAGE:\n#   Error at "
         "file "
         "standard input, line 2, char 1.\n#      unexpected end of input\n\n"},
        // Found before the lock, whatever would be refused first.
        {"", "tqsmgr -remove system -name no\ntqsmgr -ad\n", 11,
         "2: Invalid or missing argument. Use \"-h\" to display help.\n",
         "# Line 2 refused, nothing changed.\n\n# EXIT CODE: 11\n# ERROR MESSAGE:\n#   Invalid or "
         "missing argument. Use \"-h\" to display help.\n\n"},
        {"--keep-going",
         "tqsmgr -U\n" + kLab +
             "tqsmgr -config f -set a=b\ntqsmgr -f x -write kfxconf\n"
             "tqsmgr -security true <<E\nE\ntqsmgr -update cache -platform x\nls\n",
         11,
         "1: a script changes the inventory alone\n3: a script changes the inventory alone\n"
         "4: another map\n5: a here-document behind another command than -update cache\n"
         "7: -update cache without a here-document\n8: no tqsmgr command\n",
         ""},
        {"--dry-run", kLab + "tqsmgr -security no\n", 11,
         "2: Invalid or missing argument. Use \"-h\" to display help.\n", ""},
        {map, "tqsmgr -f x -view kfxconf\ntqsmgr -h\ntqsmgr -V\ntqsmgr -config a -get b\n", 0, "",
         ""},
    };
    for (const auto& row : rows) {
        const Tree tree;
        const auto before = tree.Files();
        tree.Write("in", row.script);
        const RunResult r = tree.Shell("tqs apply " + row.options + " - < in");
        EXPECT_EQ(r.code, row.code);
        EXPECT_EQ(std::regex_replace(r.err, std::regex("tqs: standard input:"), ""), row.err);
        EXPECT_EQ(r.out, "");
        tree.Remove("in");
        EXPECT_EQ(tree.Files(), before);
        const std::string log = tree.Exists(kLog) ? tree.Read(kLog) : "";
        EXPECT_EQ(log.substr(std::min<size_t>(log.size(), 179)),
                  row.comments.empty() ? "" : "# tqs apply -\n" + row.comments);
    }
}

TEST(Apply, KeepsGoingTriesAndNotifiesOnce) {
    const Tree tree;
    tree.Write("s", kLab + kLab + kDb + "tqsmgr -remove\n");
    const std::string errors =
        "tqs: s:2: Duplicate name \"lab\".\ntqs: s:4: Invalid or missing "
        "argument. Use \"-h\" to display help.\n";
    RunResult r = tree.Shell("tqs apply --keep-going --dry-run s");
    EXPECT_EQ(r.out,
              "+ platform \"lab\": addr \"1.1.1.1\", port \"1\", model \"M100\"\n"
              "+ console \"db\": platform \"lab\", port \"2\"\n");
    EXPECT_EQ(r.err, errors);
    EXPECT_EQ(r.code, 5);
    EXPECT_FALSE(tree.Exists(kLog) || tree.Exists(kLock) || tree.Exists(kKfxConf));
    r = tree.Shell("tqs apply --keep-going s");
    EXPECT_EQ(r.out + r.err, errors);
    EXPECT_EQ(r.code, 5);
    EXPECT_EQ(tree.Read(kCalls), "web\nkfxd update\nlrp\n");
    EXPECT_EQ(tree.Shell("grep '^# EXIT' " + kLog).out,
              "# EXIT CODE: 0\n# EXIT CODE: 5\n# EXIT CODE: 0\n# EXIT CODE: 11\n");
    // Those that commands have all silenced, or that the run does.
    tree.Write("s",
               "tqsmgr -nonotify kfxd -update system -name db -port 3\ntqsmgr -write kfxconf\n");
    tree.Remove(kCalls);
    EXPECT_EQ(tree.Shell("tqs apply --no-notify web s").code, 0);
    EXPECT_EQ(tree.Read(kCalls), "lrp\n");
    // Its failure is told in the last entry that asked for it.
    tree.Remove(kProduct + "bin/notifyweb");
    tree.Write("s",
               "tqsmgr -remove platform -name lab\n" + kLab + kLab + "tqsmgr -write kfxconf\n");
    EXPECT_EQ(tree.Shell("rm " + kLog + "; tqs apply --keep-going s").code, 5);
    EXPECT_EQ(
        tree.Shell("sed -n 's/^# EXIT CODE: //p;s/^#   Error: .*/failed/p' " + kLog + "|xargs").out,
        "0 failed 0 5 0\n");
}

TEST(Apply, LeavesOldFilesOrNewOnes) {
    const struct {
        std::string obstacle;
        int code;
        std::string err;
        bool is_written;
        std::string codes;
        std::string script = "tqsmgr -security true\n" + kLab + "tqsmgr -security false\n";
    } rows[] = {
        {kMap + ".tmp/x", 40, "Cannot open \"" + kMap + ".tmp\".", false, "40"},
        {kKfxConf + "/x", 40, "Cannot open \"" + kKfxConf + "\".", true, "0 40 0"},
        {kKfxConf + "/x", 40, "Cannot open \"" + kKfxConf + "\".", false, "40",
         "tqsmgr -write kfxconf"},
        {kLock + "/x", 43, "Cannot open lock file \"" + kLock + "\".", false, "43"},
        {kMap, 20, "", false, "20"},
    };
    for (const auto& row : rows) {
        const Tree tree;
        std::filesystem::create_directories(
            std::filesystem::path(tree.Path(row.obstacle)).parent_path());
        tree.Write(row.obstacle, "");
        const std::string before = tree.Read(kMap);
        tree.Write("s", row.script);
        const RunResult r = tree.Shell("tqs apply s");
        EXPECT_EQ(r.code, row.code) << r.err;
        EXPECT_TRUE(row.err.empty() || r.err == "tqs: " + row.err + "\n") << r.err;
        EXPECT_EQ(tree.Read(kMap) != before, row.is_written);
        EXPECT_EQ(tree.Shell("sed -n 's/^# EXIT CODE: //p' " + kLog + " | xargs").out,
                  row.codes + "\n");
        EXPECT_EQ(tree.Read(kCalls), "(none)");
        EXPECT_EQ(tree.Shell("grep -c '^# Nothing changed.$' " + kLog).out,
                  row.obstacle.starts_with(kKfxConf) ? "0\n" : "1\n");
    }
}

TEST(Apply, WaitsAndNamesTheHolder) {
    const Tree tree;
    tree.Write("s", kLab);
    tree.Write(kLock, std::to_string(getpid()));
    const int lock = open(tree.Path(kLock).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    RunResult r = tree.Shell("timeout 10 tqs apply --wait 0 s");
    EXPECT_EQ(r.code, 43);
    const std::regex held("tqs: locked by process " + std::to_string(getpid()) +
                          R"( \(.*tests.*\), user \S+, for \d+ s\n)");
    EXPECT_TRUE(std::regex_match(r.err, held)) << r.err;
    EXPECT_EQ(tree.Read(kLock), std::to_string(getpid()));
    tree.Write(kLock, "");
    EXPECT_EQ(tree.Shell("timeout 10 tqs apply --wait 0 s").err, "tqs: locked\n");
    tree.Write(kLock, "999999999");
    r = tree.Shell("timeout 10 tqs apply --wait 0 s");
    EXPECT_TRUE(r.err.starts_with("tqs: locked by process 999999999, which is gone, for "))
        << r.err;
    Running waiting = tree.Start({"apply", "--wait", "60", "s"}, "", TQS_TEST);
    EXPECT_EQ(flock(lock, LOCK_UN), 0);
    EXPECT_EQ(waiting.Wait().code, 0);
    close(lock);
}

TEST(Apply, NamesAnotherMapInItsEntries) {
    const Tree tree;
    tree.Write("m", tree.Read(kMap));
    tree.Write("s", kLab + "tqsmgr -f m -security true\n");
    const std::string product = tree.Read(kMap);
    EXPECT_EQ(tree.Shell("tqs apply --map m s").code, 0);
    EXPECT_EQ(tree.Read(kMap), product);
    EXPECT_EQ(tree.Shell("grep '^tqsmgr' " + kLog).out,
              "tqsmgr -f \"m\" -add \"platform\" -name \"lab\" -model \"M100\" -addr \"1.1.1.1\" "
              "-port \"1\" \n"
              "tqsmgr -f \"m\" -security \"true\" \n");
}
