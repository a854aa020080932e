#include "xml/encoding.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/text.h"
#include "library/converter.h"

bool IsUtf8(std::string_view name) {
    return name.empty() || EqualsIgnoringCase(name, "UTF-8");
}

namespace {

// The system's name for an encoding. The library reads some by itself, under names of its own.
std::string SystemName(const std::string& name) {
    static constexpr auto kNames =
        std::to_array<std::pair<const char*, const char*>>({{"US_ASCII", "ASCII"},
                                                            {"USASCII", "ASCII"},
                                                            {"LATIN-1", "LATIN1"},
                                                            {"LATIN_1", "LATIN1"},
                                                            {"IBM-819", "LATIN1"},
                                                            {"IBM01140", "IBM1140"},
                                                            {"CP01140", "IBM1140"},
                                                            {"ISO-10646-UCS-2", "UCS-2"},
                                                            {"IBM1200", "UTF-16"},
                                                            {"IBM-1200", "UTF-16"},
                                                            {"ISO-10646-UCS-4", "UCS-4"},
                                                            {"UCS_4", "UCS-4"}});
    const auto* const found = std::ranges::find_if(
        kNames, [&name](const auto& one) { return EqualsIgnoringCase(name, one.first); });
    return found == kNames.end() ? name : found->second;
}

// Where in a document a byte stands, for text in the writer's form: tags and comments, and within
// tags attribute values in double quotes.
class Place {
  public:
    // Moves on by "text".
    void Pass(std::string_view text) {
        for (const char c : text) {
            Pass(c);
        }
    }
    [[nodiscard]] bool IsInValue() const { return state_ == State::kValue; }

  private:
    enum class State { kBetween, kTag, kValue, kComment };

    void Pass(char c) {
        last_ = (last_ + c).substr(last_.size() < kMemory ? 0 : 1);
        switch (state_) {
            case State::kBetween:
                state_ = c == '<' ? State::kTag : State::kBetween;
                break;
            case State::kTag:
                if (EndsWith("<!--")) {
                    state_ = State::kComment;
                    last_.clear();
                } else if (c == '"') {
                    state_ = State::kValue;
                } else if (c == '>') {
                    state_ = State::kBetween;
                }
                break;
            case State::kValue:
                state_ = c == '"' ? State::kTag : State::kValue;
                break;
            case State::kComment:
                state_ = EndsWith("-->") ? State::kBetween : State::kComment;
                break;
        }
    }
    [[nodiscard]] bool EndsWith(std::string_view mark) const {
        return last_.size() >= mark.size() &&
               last_.compare(last_.size() - mark.size(), mark.size(), mark) == 0;
    }

    static constexpr size_t kMemory = 4;
    State state_ = State::kBetween;
    std::string last_;  // the bytes passed last, as many as a mark has
};

std::string ReferenceTo(int character) {
    return "&#" + std::to_string(character) + ";";
}

// Whether "converted", in the encoding "name", is read as "text".
bool IsReadAs(const std::string& text, const std::string& name, std::string_view converted) {
    Converter converter("UTF-8", name);
    std::string read;
    std::string_view end;
    return converter.Convert(converted, read) && converter.Convert(end, read) && read == text;
}

// Converts the document as it is, but for characters that the encoding lacks.
bool Convert(std::string_view document, const std::string& name, std::string& converted) {
    Converter converter(name, "UTF-8");
    Place place;
    std::string text;
    for (std::string_view rest = document; !converter.Convert(rest, converted);) {
        const std::string_view done = document.substr(0, document.size() - rest.size());
        place.Pass(done);
        const int character = rest.empty() ? -1 : TakeCharacter(rest);
        const std::string reference = ReferenceTo(character);
        std::string_view substitute = reference;
        if (character < 0 || !place.IsInValue() || !converter.Convert(substitute, converted)) {
            return false;
        }
        text.append(done).append(reference);
        document = rest;
    }
    text += document;
    std::string_view end;
    return converter.Convert(end, converted) && IsReadAs(text, name, converted);
}

// The document with references for all characters of attribute values that encodings disagree on:
// those beyond ASCII, the backslash and the tilde.
std::string WithReferences(std::string_view document) {
    std::string text;
    Place place;
    while (!document.empty()) {
        std::string_view piece = document;
        const int character = TakeCharacter(document);
        piece.remove_suffix(document.size());
        const bool disputed = character >= 0x80 || character == '\\' || character == '~';
        text += disputed && place.IsInValue() ? ReferenceTo(character) : std::string(piece);
        place.Pass(piece);
    }
    return text;
}

}  // namespace

bool ConvertDocument(std::string_view document, const std::string& name, std::string& converted) {
    const std::string encoding = SystemName(name);
    if (Convert(document, encoding, converted)) {
        return true;
    }
    converted.clear();
    return Convert(WithReferences(document), encoding, converted);
}

bool CanWriteIn(const std::string& name) {
    // What the library knows a declaration by: "<" in ASCII, in EBCDIC, in two or four bytes, or a
    // byte order mark before it.
    static constexpr std::string_view kFirstBytes("<\x4C\0\xFE\xFF", 5);
    std::string converted;
    return IsUtf8(name) ||
           (ConvertDocument("<?xml version=\"1.0\"?>\n<SystemMap/>\n", name, converted) &&
            kFirstBytes.find(converted.front()) != std::string_view::npos);
}
