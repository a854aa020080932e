#include "translog/shell_text.h"

#include <algorithm>

// A shell leaves a backslash alone unless it stands before one of the characters that it escapes.
// "escapable" are those, "at_end" says whether the end of the text counts as one (the closing quote
// follows it).
static bool NeedsEscapes(std::string_view text, std::string_view special,
                         std::string_view escapable, bool at_end) {
    for (size_t i = text.find_first_of(special); i != std::string_view::npos;
         i = text.find_first_of(special, i + 1)) {
        if (text[i] != '\\') {
            return true;
        }
        const bool last = i + 1 == text.size();
        if (last ? at_end : escapable.find(text[i + 1]) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

static std::string WithBackslashes(std::string_view text, std::string_view special) {
    std::string escaped;
    escaped.reserve(text.size() + text.size() / 8);
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
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
    const bool escape = NeedsEscapes(word, kSpecial, "\"`$\\\n", true);
    return '"' + (escape ? WithBackslashes(word, kSpecial) : std::string(word)) + '"';
}

static bool HasLine(std::string_view text, std::string_view line) {
    for (size_t at = text.find(line); at != std::string_view::npos; at = text.find(line, at + 1)) {
        const size_t end = at + line.size();
        if ((at == 0 || text[at - 1] == '\n') && (end == text.size() || text[end] == '\n')) {
            return true;
        }
    }
    return false;
}

std::string HereDocument(std::string_view input) {
    static constexpr std::string_view kSpecial = "`$\\";
    std::string delimiter = "EOF";
    for (int number = 1; HasLine(input, delimiter); ++number) {
        delimiter = "EOF" + std::to_string(number);
    }
    std::string text = "<<" + delimiter + "\n";
    if (NeedsEscapes(input, kSpecial, "`$\\\n", false)) {
        text += WithBackslashes(input, kSpecial);
    } else {
        text += input;
    }
    if (!input.empty() && input.back() != '\n') {
        text += '\n';
    }
    return text + delimiter + "\n";
}
