#include "library/converter.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/text.h"

// What is called Shift_JIS has a backslash and a tilde where the table of that name has the yen
// sign and the overline.
static std::string TableFor(const std::string& encoding) {
    constexpr std::array<std::string_view, 5> kNames = {"Shift_JIS", "Shift-JIS", "SJIS",
                                                        "MS_Kanji", "csShiftJIS"};
    const bool is_shift_jis = std::ranges::any_of(
        kNames, [&](std::string_view name) { return EqualsIgnoringCase(name, encoding); });
    return is_shift_jis ? "CP932" : encoding;
}

Converter::Converter(const std::string& to, const std::string& from)
    : handle_(iconv_open(TableFor(to).c_str(), TableFor(from).c_str())) {}

Converter::~Converter() {
    if (IsKnown()) {
        iconv_close(handle_);
    }
}

bool Converter::IsKnown() const {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): what iconv_open returns for an unknown encoding.
    return handle_ != reinterpret_cast<iconv_t>(-1);
}

Converter::Stop Converter::Convert(std::string_view& text, std::span<char>& room) {
    if (!IsKnown()) {
        return Stop::kNone;
    }
    // iconv does not change its input, though its type says it may.
    char* from = const_cast<char*>(text.data());
    size_t left = text.size();
    char* to = room.data();
    size_t free = room.size();
    const bool is_all = iconv(handle_, &from, &left, &to, &free) != static_cast<size_t>(-1);
    const int cause = is_all ? 0 : errno;
    text = text.substr(text.size() - left);
    room = room.last(free);
    return is_all ? Stop::kText
                  : (cause == E2BIG ? Stop::kRoom : (cause == EINVAL ? Stop::kPart : Stop::kNone));
}

bool Converter::Convert(std::string_view& text, std::string& converted) {
    std::array<char, 4096> piece{};
    for (;;) {
        std::span<char> room(piece);
        const Stop stop = Convert(text, room);
        converted.append(piece.data(), piece.size() - room.size());
        if (stop != Stop::kRoom) {
            return stop == Stop::kText;
        }
    }
}
