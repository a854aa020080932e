#include "base/text.h"

#include <algorithm>
#include <array>

constexpr char32_t kReplacement = 0xFFFD;

int TakeCharacter(std::string_view& text) {
    struct Form {
        unsigned mask, lead;
        size_t length;
        unsigned smallest;
    };
    static constexpr std::array<Form, 4> kForms = {{{0x80, 0x00, 1, 0},
                                                    {0xE0, 0xC0, 2, 0x80},
                                                    {0xF0, 0xE0, 3, 0x800},
                                                    {0xF8, 0xF0, 4, 0x10000}}};
    const auto lead = static_cast<unsigned char>(text.front());
    const auto* const form = std::find_if(
        kForms.begin(), kForms.end(), [lead](const Form& f) { return (lead & f.mask) == f.lead; });
    if (form == kForms.end() || text.size() < form->length) {
        text.remove_prefix(1);
        return -1;
    }
    unsigned code = lead & ~form->mask & 0xFFU;
    for (size_t i = 1; i < form->length; ++i) {
        if (!IsContinuationByte(text[i])) {
            text.remove_prefix(1);
            return -1;
        }
        code = (code << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < form->smallest || surrogate || code > 0x10FFFF) {
        text.remove_prefix(1);
        return -1;
    }
    text.remove_prefix(form->length);
    return static_cast<int>(code);
}

bool IsXmlText(std::string_view text) {
    const auto is_plain = [](char c) { return c >= ' ' && c <= '~'; };
    text.remove_prefix(
        static_cast<size_t>(std::ranges::find_if_not(text, is_plain) - text.begin()));
    while (!text.empty()) {
        const int code = TakeCharacter(text);
        const bool allowed = code >= 0x20 ? code != 0xFFFE && code != 0xFFFF
                                          : code == '\t' || code == '\n' || code == '\r';
        if (!allowed) {
            return false;
        }
    }
    return true;
}

static void AppendCharacter(char32_t code, std::string& utf8) {
    const auto tail = [code](unsigned shift) {
        return static_cast<char>(0x80U | ((code >> shift) & 0x3FU));
    };
    if (code < 0x80) {
        utf8 += static_cast<char>(code);
    } else if (code < 0x800) {
        utf8 += {static_cast<char>(0xC0U | (code >> 6U)), tail(0)};
    } else if (code < 0x10000) {
        utf8 += {static_cast<char>(0xE0U | (code >> 12U)), tail(6), tail(0)};
    } else {
        utf8 += {static_cast<char>(0xF0U | (code >> 18U)), tail(12), tail(6), tail(0)};
    }
}

bool IsControl(int code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

std::string Printable(std::string_view text, size_t most) {
    static constexpr std::string_view kEllipsis = "…";
    static constexpr size_t kLastCharacter = 4;
    std::string printable;
    const bool is_cut = text.size() > most;
    while (!text.empty()) {
        if (is_cut && printable.size() + kLastCharacter + kEllipsis.size() > most) {
            return printable.append(kEllipsis);
        }
        const std::string_view before = text;
        const bool is_control = IsControl(TakeCharacter(text));
        printable += is_control ? "?" : before.substr(0, before.size() - text.size());
    }
    return printable;
}

std::string OneLine(std::string text) {
    static constexpr size_t kLongest = 2000;
    std::ranges::replace(text, '\n', ' ');
    return Printable(text, kLongest);
}

void AppendUtf8(std::u16string_view text, std::string& utf8) {
    for (size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (unit < 0xD800 || unit > 0xDFFF) {
            AppendCharacter(unit, utf8);
        } else if (unit < 0xDC00 && i + 1 < text.size() && (text[i + 1] & 0xFC00U) == 0xDC00U) {
            ++i;
            AppendCharacter(0x10000 + ((unit - 0xD800) << 10U) + (text[i] - 0xDC00U), utf8);
        } else {
            AppendCharacter(kReplacement, utf8);
        }
    }
}

std::string ToUtf8(const char16_t* text) {
    std::string utf8;
    if (text != nullptr) {
        AppendUtf8(text, utf8);
    }
    return utf8;
}

std::u16string ToUtf16(std::string_view text) {
    std::u16string utf16;
    while (!text.empty()) {
        const int taken = TakeCharacter(text);
        const char32_t code = taken < 0 ? kReplacement : static_cast<char32_t>(taken);
        if (code < 0x10000) {
            utf16 += static_cast<char16_t>(code);
        } else {
            utf16 += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10U));
            utf16 += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FFU));
        }
    }
    return utf16;
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerCase);
    return lower;
}

bool EqualsIgnoringCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return LowerCase(a) == LowerCase(b); });
}
