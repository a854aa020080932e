#include "xml/encoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>

#include "base/text.h"

bool IsUtf8(std::string_view name) {
    return name.empty() || EqualsIgnoringCase(name, "UTF-8");
}

namespace {

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

class Converter {
  public:
    explicit Converter(const std::string& encoding)
        : handle_(iconv_open(encoding.c_str(), "UTF-8")) {}
    ~Converter() {
        if (IsKnown()) {
            iconv_close(handle_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    [[nodiscard]] bool IsKnown() const { return handle_ != kNone; }

    // Converts from the front of "text" and takes off it what could be converted. True when that
    // was all.
    bool Convert(std::string_view& text, std::string& converted) {
        // iconv does not change its input, though its type says it may.
        char* from = const_cast<char*>(text.data());
        size_t left = text.size();
        const bool all = Run(&from, &left, converted);
        text = text.substr(text.size() - left);
        return all;
    }

    // Returns the encoding to its initial state, where it has states.
    bool Finish(std::string& converted) { return Run(nullptr, nullptr, converted); }

  private:
    bool Run(char** from, size_t* left, std::string& converted) {
        std::array<char, 4096> piece{};
        for (;;) {
            char* to = piece.data();
            size_t room = piece.size();
            const size_t result = iconv(handle_, from, left, &to, &room);
            const int cause = errno;
            converted.append(piece.data(), piece.size() - room);
            if (result != static_cast<size_t>(-1)) {
                return true;
            }
            if (cause != E2BIG) {
                return false;
            }
        }
    }

    // NOLINTNEXTLINE(performance-no-int-to-ptr): what iconv_open returns for an unknown encoding.
    static inline const auto kNone = reinterpret_cast<iconv_t>(-1);
    iconv_t handle_;
};

std::string ReferenceTo(int character) {
    return "&#" + std::to_string(character) + ";";
}

}  // namespace

bool ConvertDocument(std::string_view document, const std::string& name, std::string& converted) {
    Converter converter(name);
    if (!converter.IsKnown()) {
        return false;
    }
    Place place;
    std::string_view rest = document;
    for (std::string_view before = rest; !converter.Convert(rest, converted); before = rest) {
        place.Pass(before.substr(0, before.size() - rest.size()));
        const int character = TakeCharacter(rest);
        if (character < 0 || !place.IsInValue()) {
            return false;
        }
        const std::string reference = ReferenceTo(character);
        std::string_view text = reference;
        if (!converter.Convert(text, converted)) {
            return false;
        }
    }
    return converter.Finish(converted);
}

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
