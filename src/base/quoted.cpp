#include "base/quoted.h"

#include <array>
#include <cstdio>

#include "base/text.h"

// How a character is written in quotes; empty for one that needs no escape.
static std::string EscapeOf(int code) {
    static constexpr std::string_view kNamed = "\"\\\t\n\r";
    const size_t at =
        code > 0 && code < 0x80 ? kNamed.find(static_cast<char>(code)) : std::string_view::npos;
    if (at != std::string_view::npos) {
        return std::string("\\") + "\"\\tnr"[at];
    }
    if (!IsControl(code)) {
        return "";
    }
    std::array<char, sizeof "\\u0000"> number{};
    static_cast<void>(
        snprintf(number.data(), number.size(), "\\u%04x", static_cast<unsigned>(code) & 0xFFFFU));
    return number.data();
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::string_view before = text;
        const std::string escape = EscapeOf(TakeCharacter(text));
        quoted += escape.empty() ? before.substr(0, before.size() - text.size()) : escape;
    }
    return quoted + '"';
}

std::string Shortened(std::string_view text) {
    static constexpr size_t kMost = 60;
    return text.size() > kMost ? Quoted(text.substr(0, kMost)) + "..." : Quoted(text);
}

std::string WithEscapes(std::string_view json) {
    std::string escaped;
    while (!json.empty()) {
        const std::string_view before = json;
        const int code = TakeCharacter(json);
        escaped += code >= 0x7F && IsControl(code)
                       ? EscapeOf(code)
                       : std::string(before.substr(0, before.size() - json.size()));
    }
    return escaped;
}
