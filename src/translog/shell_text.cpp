#include "translog/shell_text.h"

#include <algorithm>
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

// "EOF", or EOF with the first number with which no line of the input begins: a shell in use loses
// bytes of a line that begins like the end.
static std::string DelimiterFor(std::string_view input) {
    static constexpr std::string_view kDelimiter = "EOF";
    size_t lines = 0;
    for (std::string_view rest = input; !rest.empty();) {
        lines += TakeLine(rest).starts_with(kDelimiter) ? 1 : 0;
    }
    if (lines == 0) {
        return std::string(kDelimiter);
    }
    // A line begins with as many numbers as it has digits, so one of these is left.
    static constexpr size_t kMostDigits = 20;
    std::vector<bool> begins(lines * kMostDigits + 2);
    while (!input.empty()) {
        std::string_view line = TakeLine(input);
        if (!line.starts_with(kDelimiter)) {
            continue;
        }
        line.remove_prefix(kDelimiter.size());
        size_t number = 0;
        for (; !line.empty() && line[0] >= (number == 0 ? '1' : '0') && line[0] <= '9' &&
               (number = number * 10 + static_cast<size_t>(line[0] - '0')) < begins.size();
             line.remove_prefix(1)) {
            begins[number] = true;
        }
    }
    const auto free = std::find(begins.begin() + 1, begins.end(), false) - begins.begin();
    return std::string(kDelimiter) + std::to_string(free);
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
