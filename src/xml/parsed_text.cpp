#include "xml/parsed_text.h"

#include <array>
#include <cstring>
#include <string>
#include <vector>

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
constexpr size_t kLongSlots = 64;
constexpr size_t kValueSlots = 1024;
std::array<const char*, kValueSlots> values_seen;
std::array<const char*, kLongSlots> long_values_seen;

// Whether "kept" is the plain text "wide".
bool IsSame(const char* kept, const char16_t* wide) {
    while (*kept != '\0' && *wide < 0x80 && static_cast<char16_t>(*kept) == *wide) {
        ++kept;
        ++wide;
    }
    return *kept == '\0' && *wide == 0;
}

const char* KeepLong(const char16_t* value, uint32_t hash) {
    const std::u16string_view wide(value);
    const char*& seen = long_values_seen[hash % kLongSlots];
    if (seen != nullptr && IsSame(seen, value)) {
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

// Names come in the same order over and over, so the one that followed the last name before is
// tried first.
NameId ParsedName(const char16_t* name) {
    static std::vector<NameId> followers = {0};
    static NameId last = 0;
    NameId& follower = followers[last];
    if (!IsSame(NameText(follower).data(), name)) {
        follower = InternName(ToUtf8(name));
    }
    last = follower;
    if (followers.size() <= last) {
        followers.resize(last + 1);
    }
    return last;
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
