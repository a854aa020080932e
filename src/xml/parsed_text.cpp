#include "xml/parsed_text.h"

#include <array>
#include <cstring>
#include <string>

#include "base/arena.h"
#include "base/text.h"

namespace {

// Plain ASCII text up to this length is looked for among the texts seen before.
constexpr size_t kShort = 24;

// Text that fits, narrowed, with a hash; "length" is more than kShort for any other text.
struct ShortText {
    std::array<char, kShort + 1> text;
    size_t length;
    uint32_t hash;
};

ShortText Narrow(const char16_t* wide) {
    ShortText narrow;
    narrow.hash = 2166136261U;
    size_t i = 0;
    for (; i < kShort && wide[i] != 0 && wide[i] < 0x80; ++i) {
        narrow.text[i] = static_cast<char>(wide[i]);
        narrow.hash = (narrow.hash ^ wide[i]) * 16777619U;
    }
    narrow.text[i] = '\0';
    narrow.length = wide[i] == 0 ? i : kShort + 1;
    narrow.hash ^= narrow.hash >> 15U;
    return narrow;
}

// One slot for each hash: a text that meets another's slot takes it over. Long texts are looked for
// too, by their beginning, since an attribute's default comes once for each element.
constexpr size_t kNameSlots = 64;
constexpr size_t kValueSlots = 1024;
std::array<NameId, kNameSlots> names_seen;
std::array<const char*, kValueSlots> values_seen;
std::array<const char*, kNameSlots> long_values_seen;

// Whether "kept" is the plain text "wide".
bool IsSame(const char* kept, std::u16string_view wide) {
    size_t i = 0;
    while (i < wide.size() && kept[i] != '\0' && static_cast<char16_t>(kept[i]) == wide[i]) {
        ++i;
    }
    return i == wide.size() && kept[i] == '\0';
}

const char* KeepLong(const char16_t* value, uint32_t hash) {
    const std::u16string_view wide(value);
    const char*& seen = long_values_seen[hash % kNameSlots];
    if (seen != nullptr && IsSame(seen, wide)) {
        return seen;
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
    seen = text;
    return text;
}

}  // namespace

NameId ParsedName(const char16_t* name) {
    const ShortText text = Narrow(name);
    if (text.length > kShort) {
        return InternName(ToUtf8(name));
    }
    const std::string_view plain(text.text.data(), text.length);
    NameId& seen = names_seen[text.hash % kNameSlots];
    if (NameText(seen) != plain) {
        seen = InternName(plain);
    }
    return seen;
}

const char* ParsedValue(const char16_t* value) {
    const ShortText text = Narrow(value);
    if (text.length > kShort) {
        return KeepLong(value, text.hash);
    }
    const char*& seen = values_seen[text.hash % kValueSlots];
    if (seen == nullptr || strcmp(seen, text.text.data()) != 0) {
        seen = arena::Copy({text.text.data(), text.length});
    }
    return seen;
}
