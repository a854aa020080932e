#include "xml/parsed_text.h"

#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/arena.h"
#include "base/text.h"
#include "xml/rvt_xml_writer.h"

namespace {

// Printable ASCII text up to this length is looked for among the texts seen before.
constexpr size_t kShort = 24;

// The beginning of a text, narrowed and filled up with zeros.
using Words = std::array<uint64_t, kShort / sizeof(uint64_t)>;

struct ShortText {
    Words words;
    size_t length;  // More than kShort for text that is longer or not printable.
};

ShortText Narrow(const char16_t* wide) {
    std::array<char, kShort> text = {};
    size_t length = 0;
    while (length < kShort && wide[length] >= 0x20 && wide[length] < 0x80) {
        text[length] = static_cast<char>(wide[length]);
        ++length;
    }
    ShortText narrow;
    memcpy(narrow.words.data(), text.data(), kShort);
    narrow.length = wide[length] == 0 ? length : kShort + 1;
    return narrow;
}

uint64_t Hash(const Words& words) {
    uint64_t hash = 0;
    for (const uint64_t word : words) {
        hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32U;
    }
    return hash;
}

// One slot for each hash: a text that meets another's slot takes it over. A slot holds its text
// beside the kept copy, which may lie in memory that has not been touched for long. Long texts are
// looked for too, by their beginning, since an attribute's default comes once for each element.
struct ValueSlot {
    Words words;
    const char* kept;
};

constexpr size_t kLongSlots = 64;
constexpr size_t kValueSlots = 1024;

// A name as the parser gives it. Names come in the same orders over and over, so the two that
// followed a name before are tried first.
struct KnownName {
    std::u16string text;  // empty until the parser has given it
    NameId likely = 0;
    NameId other = 0;
};

struct {
    ValueSlot* values = nullptr;  // in the arena, whose page is there anyway
    std::array<const char*, kLongSlots> long_values = {};
    std::vector<KnownName> names = {{}};  // by id
    NameId last_name = 0;
    bool are_as_written = true;  // all values
} seen;

// Whether "kept" is the plain text "wide".
bool IsSame(const char* kept, const char16_t* wide) {
    while (*kept != '\0' && *wide < 0x80 && static_cast<char16_t>(*kept) == *wide) {
        ++kept;
        ++wide;
    }
    return *kept == '\0' && *wide == 0;
}

bool IsSame(const char16_t* known, const char16_t* name) {
    while (*known == *name && *known != 0) {
        ++known;
        ++name;
    }
    return *known == *name;
}

const char* KeepLong(const char16_t* value, uint64_t hash) {
    const std::u16string_view wide(value);
    const char*& known = seen.long_values[hash % kLongSlots];
    if (known != nullptr && IsSame(known, value)) {
        return known;
    }
    size_t plain = 0;
    while (plain < wide.size() && wide[plain] < 0x80) {
        ++plain;
    }
    if (plain < wide.size()) {
        return arena::Copy(ToUtf8(value));
    }
    char* text = arena::AllocateText(plain);
    for (size_t i = 0; i < plain; ++i) {
        text[i] = static_cast<char>(wide[i]);
    }
    known = text;
    return text;
}

}  // namespace

NameId ParsedName(const char16_t* name) {
    const auto is_name = [name](NameId id) { return IsSame(seen.names[id].text.c_str(), name); };
    auto& [text, likely, other] = seen.names[seen.last_name];
    if (!is_name(likely)) {
        std::swap(likely, other);
        if (!is_name(likely)) {
            likely = InternName(ToUtf8(name));
        }
    }
    seen.last_name = likely;
    if (seen.names.size() <= seen.last_name) {
        seen.names.resize(seen.last_name + 1);
    }
    if (KnownName& known = seen.names[seen.last_name]; known.text.empty()) {
        known.text = name;
    }
    return seen.last_name;
}

const char* ParsedValue(const char16_t* value) {
    const ShortText text = Narrow(value);
    const uint64_t hash = Hash(text.words);
    if (text.length > kShort) {
        const char* kept = KeepLong(value, hash);
        seen.are_as_written = seen.are_as_written && IsReadAsWritten(kept);
        return kept;
    }
    if (seen.values == nullptr) {
        seen.values = static_cast<ValueSlot*>(arena::Allocate(kValueSlots * sizeof(ValueSlot)));
    }
    auto& [words, kept] = seen.values[hash % kValueSlots];
    if (kept == nullptr || words != text.words) {
        std::array<char, kShort> plain;
        memcpy(plain.data(), text.words.data(), kShort);
        words = text.words;
        kept = arena::Copy({plain.data(), text.length});
    }
    return kept;
}

bool AreParsedValuesAsWritten() {
    return seen.are_as_written;
}
