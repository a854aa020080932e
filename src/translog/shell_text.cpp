#include "translog/shell_text.h"

#include <algorithm>
#include <set>

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

// "EOF", or EOF with the first number with which no line of the input begins: a shell in use loses
// bytes of a line that begins like the end.
static std::string DelimiterFor(std::string_view input) {
    static constexpr std::string_view kDelimiter = "EOF";
    // Longer numbers than the input has lines are never needed.
    static constexpr size_t kMostDigits = 20;
    std::set<std::string_view> begins;
    while (!input.empty()) {
        std::string_view line = TakeLine(input);
        if (!line.starts_with(kDelimiter)) {
            continue;
        }
        line.remove_prefix(kDelimiter.size());
        for (size_t digits = 0; digits <= std::min(kMostDigits, line.size()); ++digits) {
            begins.insert(line.substr(0, digits));
        }
    }
    std::string number;
    for (int next = 1; begins.count(number) != 0; ++next) {
        number = std::to_string(next);
    }
    return std::string(kDelimiter) + number;
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
