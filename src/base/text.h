// UTF-8, the encoding of all text in the program, and the UTF-16 that the XML parser speaks.
#pragma once

#include <string>
#include <string_view>

// Whether "text" is valid UTF-8 made only of characters that an XML 1.0 document may hold: tab,
// line feed, carriage return, and everything from U+0020 on but surrogates, U+FFFE and U+FFFF.
bool IsXmlText(std::string_view text);

// Whether "byte" continues a multi-byte character.
constexpr bool IsContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Takes the character at the front of "text" off it and returns its code point, or -1 when the
// bytes there are not valid UTF-8 (one byte is then taken). "text" must not be empty.
int TakeCharacter(std::string_view& text);

// Takes the first line, its line end included, off "text".
inline std::string_view TakeLine(std::string_view& text) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end == std::string_view::npos ? end : end + 1);
    text.remove_prefix(line.size());
    return line;
}

// Whether a terminal would obey the character, or a reader take it for the end of a line: control
// characters, line separators, marks that turn the direction of text, and -1.
bool IsControl(int code);

// "text" with a "?" for each control character and each byte that is not UTF-8. Of more than "most"
// bytes, at least ten, the beginning and "…", which are not longer.
std::string Printable(std::string_view text, size_t most = std::string_view::npos);

// A message that may hold foreign text as one line of bounded length: line feeds become blanks.
std::string OneLine(std::string text);

// Appends the UTF-8 form of "text"; a surrogate without its partner becomes U+FFFD.
void AppendUtf8(std::u16string_view text, std::string& utf8);
std::string ToUtf8(const char16_t* text);

// The UTF-16 form of "text"; bytes that are not UTF-8 become U+FFFD.
std::u16string ToUtf16(std::string_view text);

// ASCII letters in lower case, everything else as it is: how names are compared without case.
constexpr char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
std::string ToLower(std::string_view text);
bool EqualsIgnoringCase(std::string_view one, std::string_view other);
