// Runs the cases of the files in cases/. A case is a command line, or a script of several lines, up
// to "=>", and what it comes to:
//
//     -name p1 -port x => 13 Invalid port number "x".   fails with this code and message
//     lab -port 7002 => ~lab Port Number=7002           succeeds and changes the map so
//     -view security => => false                        succeeds and prints this, or the lines
//                                                       behind "> " below
//
// 11 alone has the message of command lines. [[a|b]] stands for a case with a and one with b, "%"
// in a message for the last of such. "*" before a message means that it is a part of what is said,
// in the place of changes that the map is not looked at. A failure changes no file.
//
// Changes, parted by " & ", are "~NAME VALUES", "-NAME", "+ELEMENT", "+NAME ELEMENT" (inside NAME)
// and "@serial=2" (of the root); "=" means the elements in the lines below,
// up to an empty one; changes may follow.
//
// Input stands between " << " and "=>". \n, \t, \r, \0 and \xff are characters, \{3*ab} is ababab,
// @A@ is what "let A TEXT" has said. Before the cases stand:
//
//     state [ATTRIBUTES]  a map of the elements in the lines below, up to an empty one: "P VALUES"
//                         and "C VALUES" as new ones are but for these values, "p" and "c" with
//                         these alone, or XML; one blank more before what is inside another
//     file PATH TEXT      a file; M is the map
//     setup COMMANDS      run before each case; "state" ends files and setup
//     run WORDS           what stands before each case
//     follow NAMES        what a success has: kfx.conf, and calls of notifications; "*" for any and
//     any map
#include <fstream>
#include <regex>
#include <span>

#include "base/output.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// After the headers whose names it would hide.
#include "sample_map.h"

namespace {

using Lines = std::vector<std::string>;

struct State {
    std::string attributes = kAttributes;
    Lines elements;
    std::map<std::string, std::string> files;
    std::string setup;
};

std::string Behind(const std::string& text, size_t at) {
    return text.substr(std::min(at, text.size()));
}

size_t Indent(const std::string& line) {
    return std::min(line.find_first_not_of(' '), line.size());
}

// The end of what is inside the element at "at".
size_t EndOf(std::span<const std::string> lines, size_t at) {
    size_t end = at + 1;
    while (end < lines.size() && Indent(lines[end]) > Indent(lines[at])) {
        ++end;
    }
    return end;
}

std::string ElementsText(std::span<const std::string> lines) {
    std::string text;
    for (size_t i = 0; i < lines.size(); i = EndOf(lines, i)) {
        const std::string line = Behind(lines[i], Indent(lines[i])), values = Behind(line, 2);
        const std::string inside = ElementsText(lines.subspan(i + 1, EndOf(lines, i) - i - 1));
        text += line[0] == 'P'   ? PlatformText(values, inside)
                : line[0] == 'C' ? ConsoleText(8, values, inside)
                : line[0] == 'p' ? ElementText(4, "Platform", values, inside)
                : line[0] == 'c' ? ElementText(8, "Console", values, inside)
                                 : line + "\n";
    }
    return text;
}

std::string TextOf(const State& state) {
    return MapText(ElementsText(state.elements), state.attributes);
}

// A map in one layout.
std::string Normal(const std::string& map) {
    RVT_XML_Tree tree;
    std::string text;
    Output out(text);
    EXPECT_TRUE(ParseXMLText(map, "map", tree).ok() && PrintTree(out, tree).ok() && out.Flush());
    return text;
}

void Change(State& state, const std::string& change) {
    Lines& lines = state.elements;
    const size_t blank = std::min(change.find(' '), change.size());
    const std::string name = change.substr(1, blank - 1), rest = Behind(change, blank + 1);
    if (change[0] == '@') {
        const std::string key = name.substr(0, name.find('=') + 1);
        state.attributes = std::regex_replace(state.attributes, std::regex(key + "\"[^\"]*\""),
                                              key + '"' + Behind(name, key.size()) + '"');
        return;
    }
    if (change[0] == '+' && name.size() <= 1) {
        lines.push_back(change.substr(1));
        return;
    }
    const auto named = std::ranges::find_if(lines, [&name](const std::string& one) {
        return (one + ";").find(";Name=" + name + ";") != std::string::npos;
    });
    ASSERT_NE(named, lines.end()) << name;
    const auto end = lines.begin() + static_cast<ptrdiff_t>(
                                         EndOf(lines, static_cast<size_t>(named - lines.begin())));
    if (change[0] == '~') {
        *named += ";" + rest;
    } else if (change[0] == '-') {
        lines.erase(named, end);
    } else {
        lines.insert(end, " " + rest);
    }
}

std::string Decoded(const std::string& text) {
    static const std::string kNames = "ntr0", kMeant("\n\t\r\0", 4);
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        const char next = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : ' ';
        if (next == 'x') {
            decoded += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else if (next == '{') {
            const size_t star = text.find('*', i), end = text.find('}', i);
            for (int n = std::stoi(text.substr(i + 2)); n > 0; --n) {
                decoded += Decoded(text.substr(star + 1, end - star - 1));
            }
            i = end;
        } else if (next != ' ' && kNames.find(next) != std::string::npos) {
            decoded += kMeant[kNames.find(next)];
            ++i;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

// The texts that the choices in "text" make possible, each with the last choice made.
std::vector<std::pair<std::string, std::string>> Choices(const std::string& text) {
    const size_t begin = text.find("[["), end = text.find("]]", begin);
    if (end == std::string::npos) {
        return {{text, ""}};
    }
    std::vector<std::pair<std::string, std::string>> all;
    std::string choices = text.substr(begin + 2, end - begin - 2) + "|";
    for (size_t bar; (bar = choices.find('|')) != std::string::npos; choices.erase(0, bar + 1)) {
        for (const auto& [rest, last] : Choices(text.substr(end + 2))) {
            const std::string choice = choices.substr(0, bar);
            all.emplace_back(text.substr(0, begin) + choice + rest, last.empty() ? choice : last);
        }
    }
    return all;
}

class Runner {
  public:
    explicit Runner(const std::string& path) : path_(path) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            lines_.push_back(line);
        }
    }

    void Run() {
        while (at_ < lines_.size()) {
            const std::string line = Take();
            if (!line.empty() && line[0] != '#' && !TakeDirective(line)) {
                TakeCase(line);
            }
        }
        EXPECT_GT(cases_, 0);
    }

  private:
    // The next line, with what names in it stand for.
    std::string Take() {
        std::string line = lines_.at(at_++);
        for (const auto& [name, text] : let_) {
            for (size_t at; (at = line.find(name)) != std::string::npos;) {
                line.replace(at, name.size(), text);
            }
        }
        return line;
    }
    Lines TakeElements() {
        Lines elements;
        while (at_ < lines_.size() && !lines_[at_].empty()) {
            elements.push_back(Decoded(Take()));
        }
        at_ += at_ < lines_.size() ? 1 : 0;
        return elements;
    }

    bool TakeDirective(const std::string& line) {
        const std::string word = line.substr(0, line.find(' '));
        const std::string rest = Behind(line, word.size() + 1);
        const std::string name = rest.substr(0, rest.find(' '));
        if (word == "state") {
            state_ = {rest.empty() ? kAttributes : rest, TakeElements(), {}, ""};
        } else if (word == "let") {
            let_["@" + name + "@"] = Behind(rest, name.size() + 1);
        } else if (word == "file") {
            state_.files[name == "M" ? kMap : name] = Decoded(Behind(rest, name.size() + 1));
        } else if (word == "setup" || word == "run" || word == "follow") {
            (word == "setup" ? state_.setup : word == "run" ? prefix_ : follow_) = rest;
        } else {
            return false;
        }
        return true;
    }

    void TakeCase(std::string text) {
        const std::string place = path_ + ":" + std::to_string(at_) + ": ";
        while (at_ < lines_.size() && text.find(" =>") == std::string::npos) {
            text += "\n" + Take();
        }
        const size_t arrow = text.find(" =>");
        ASSERT_NE(arrow, std::string::npos) << place;
        std::string result = Behind(text, arrow + 4), out;
        if (const size_t second = result.find("=> "); second != std::string::npos) {
            out = Decoded(result.substr(second + 3)) + "\n";
            result.resize(second - std::min<size_t>(second, 1));
        }
        State after = state_;
        if (result.substr(0, 1) == "=") {
            after.elements = TakeElements();
        }
        while (at_ < lines_.size() && lines_[at_][0] == '>') {
            out += Decoded(Behind(Take(), 2)) + "\n";
        }
        for (const auto& [command, choice] : Choices(text.substr(0, arrow))) {
            SCOPED_TRACE(place + command);
            const bool is_meant = !choice.empty() && result.find('%') != std::string::npos;
            RunCase(command, Decoded(is_meant ? Replaced(result, "%", choice) : result), out,
                    after);
            ++cases_;
        }
    }

    void RunCase(const std::string& text, const std::string& result, const std::string& out,
                 State after) const {
        const Tree tree;
        tree.Write(kMap, TextOf(state_));
        for (const auto& [path, content] : state_.files) {
            tree.Write(path, content);
        }
        EXPECT_TRUE(state_.setup.empty() || tree.Shell(state_.setup).code == 0);
        const auto before = tree.Files();
        const size_t input = std::min(text.find(" << "), text.size());
        const std::string command = Decoded(prefix_ + " " + text.substr(0, input));
        const RunResult r = tree.Shell(command, Decoded(Behind(text, input + 4)));
        const int code = isdigit(result[0]) != 0 ? std::stoi(result) : 0;
        EXPECT_EQ(r.code, code);
        EXPECT_EQ(r.out, out);
        ExpectMessage(r.err,
                      command.find("tqsmgr") == std::string::npos ? "tqs: " : "tqsmgr: ", code,
                      Behind(result, code == 0 ? result.size() : result.find(' ')));
        if (code != 0) {
            EXPECT_TRUE(follow_ == "*" || tree.Files() == before);
            return;
        }
        const bool is_looked_at = result.empty() ? follow_ != "*" : result[0] != '*';
        for (size_t at = result.find_first_not_of("= "); is_looked_at && at < result.size();) {
            const size_t end = std::min(result.find(" & ", at), result.size());
            Change(after, result.substr(at, end - at));
            at = end + 3;
        }
        if (is_looked_at && state_.files.contains(kMap)) {
            EXPECT_EQ(tree.Read(kMap), before.at(kMap));
        } else if (is_looked_at) {
            EXPECT_EQ(Normal(tree.Read(kMap)), Normal(TextOf(after)));
        }
        std::string follow = tree.Exists(kKfxConf) ? "kfx.conf" : "";
        for (const std::string& call : Split(tree.Exists(kCalls) ? tree.Read(kCalls) : "", '\n')) {
            follow += (follow.empty() ? "" : " ") + call;
        }
        EXPECT_TRUE(follow_ == "*" || follow == follow_) << follow;
    }

    // "message" begins with the blank behind the code.
    static void ExpectMessage(const std::string& said, const std::string& program, int code,
                              const std::string& message) {
        std::string wanted = Behind(message, 1);
        if (code == 11 && wanted.empty()) {
            wanted = "Invalid or missing argument. Use \"-h\" to display help.";
        }
        if (wanted[0] == '*') {
            EXPECT_NE(said.find(wanted.substr(1)), std::string::npos) << said;
            return;
        }
        const bool is_whole =
            wanted.empty() || code == 90 || wanted.find(program) != std::string::npos;
        EXPECT_EQ(said, (is_whole ? "" : program) + wanted + (wanted.empty() ? "" : "\n"));
    }

    std::string path_;
    Lines lines_;
    size_t at_ = 0;
    int cases_ = 0;
    std::map<std::string, std::string> let_;
    State state_;
    std::string prefix_ = "tqsmgr";
    std::string follow_;
};

Lines Files() {
    Lines names;
    for (const auto& file : std::filesystem::directory_iterator(TQS_CASES)) {
        names.push_back(file.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

class Cases : public testing::TestWithParam<std::string> {};

TEST_P(Cases, Hold) {
    Runner(TQS_CASES "/" + GetParam()).Run();
}

INSTANTIATE_TEST_SUITE_P(, Cases, testing::ValuesIn(Files()),
                         [](const auto& file) { return file.param; });

}  // namespace
