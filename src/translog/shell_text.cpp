#include "translog/shell_text.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/text.h"

// A shell leaves a backslash alone unless it stands before one of the characters that it escapes,
// which are "escapable"; the end of the text counts as one.
static bool NeedsEscapes(std::string_view text, std::string_view special,
                         std::string_view escapable) {
    for (size_t i = text.find_first_of(special); i != std::string_view::npos;
         i = text.find_first_of(special, i + 1)) {
        if (text[i] != '\\') {
            return true;
        }
        if (i + 1 == text.size() || escapable.find(text[i + 1]) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

// Appends "text" to "escaped" with a backslash before each special character.
static void AppendEscaped(std::string_view text, std::string_view special, std::string& escaped) {
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) {
            escaped += '\\';
        }
        escaped += c;
    }
}

static bool StandsBare(std::string_view word, bool is_program) {
    const auto harmless = [is_program](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("-_./:,+@%").find(c) != std::string_view::npos ||
               (c == '=' && !is_program);
    };
    return (is_program || word.substr(0, 1) == "-") &&
           std::all_of(word.begin(), word.end(), harmless);
}

std::string ShellWord(std::string_view word, bool is_program) {
    static constexpr std::string_view kSpecial = "\"`$\\";
    if (StandsBare(word, is_program)) {
        return std::string(word);
    }
    std::string quoted = "\"";
    if (NeedsEscapes(word, kSpecial, "\"`$\\\n")) {
        AppendEscaped(word, kSpecial, quoted);
    } else {
        quoted += word;
    }
    return quoted + '"';
}

using Lines = std::vector<std::string_view>;

static bool IsBeyondAscii(char c) {
    return (static_cast<unsigned char>(c) & 0x80U) != 0;
}

// Whether no line begins with "delimiter" or, unless "takes_bytes", with a beginning of it before a
// byte above 127, which a shell in use would lose.
static bool Fits(std::string_view delimiter, const Lines& lines, bool takes_bytes) {
    return std::ranges::none_of(lines, [delimiter, takes_bytes](std::string_view line) {
        const auto same =
            static_cast<size_t>(std::ranges::mismatch(delimiter, line).in1 - delimiter.begin());
        return same == delimiter.size() ||
               (!takes_bytes && same > 0 && same < line.size() && IsBeyondAscii(line[same]));
    });
}

// What is behind "beginning" in the lines that begin with it.
static Lines Behind(std::string_view beginning, const Lines& lines) {
    Lines rests;
    for (const std::string_view line : lines) {
        if (line.starts_with(beginning)) {
            rests.push_back(line.substr(beginning.size()));
        }
    }
    return rests;
}

// EOF with the first number that fits, unless an E or EO is in the way; empty when there is none.
// Each line is followed once, as far as its digits lead.
static std::string NumberedDelimiter(const Lines& lines, bool takes_bytes) {
    const auto loses_byte = [takes_bytes](std::string_view rest) {
        return !takes_bytes && !rest.empty() && IsBeyondAscii(rest[0]);
    };
    std::vector<std::pair<std::string, Lines>> begun = {{"EOF", Behind("EOF", lines)}};
    for (size_t i = 0; i < begun.size(); ++i) {
        const auto [delimiter, rests] = std::move(begun[i]);
        if (std::ranges::any_of(rests, loses_byte)) {
            continue;
        }
        for (char digit = i == 0 ? '1' : '0'; digit <= '9'; ++digit) {
            Lines longer = Behind({&digit, 1}, rests);
            if (longer.empty()) {
                return delimiter + digit;
            }
            begun.emplace_back(delimiter + digit, std::move(longer));
        }
    }
    return "";
}

// The delimiter for "input". Where each would lose a byte, one that does.
static std::string DelimiterFor(std::string_view input) {
    std::vector<std::string> delimiters = {"EOF"};
    for (const char c : std::string_view("123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ")) {
        delimiters.push_back(c <= '9' ? std::string("EOF") + c : c + std::string("EOF"));
    }
    Lines lines;
    while (!input.empty()) {
        const std::string_view line = TakeLine(input);
        if (line[0] >= 'A' && line[0] <= 'Z') {
            lines.push_back(line);
        }
    }
    delimiters.emplace_back();
    for (bool takes_bytes = false;; takes_bytes = true) {
        delimiters.back() = NumberedDelimiter(lines, takes_bytes);
        for (const std::string& delimiter : delimiters) {
            if (Fits(delimiter, lines, takes_bytes)) {
                return delimiter;
            }
        }
    }
}

void AppendHereDocument(std::string_view input, std::string& text) {
    static constexpr std::string_view kSpecial = "`$\\";
    const std::string delimiter = DelimiterFor(input);
    text += "<<" + delimiter + "\n";
    // A backslash at the very end would stand before the line end that is added.
    if (NeedsEscapes(input, kSpecial, "`$\\\n")) {
        AppendEscaped(input, kSpecial, text);
    } else {
        text += input;
    }
    if (!input.empty() && input.back() != '\n') {
        text += '\n';
    }
    text += delimiter + "\n";
}
