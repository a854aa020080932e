// Text from one encoding into another by the system's tables, which are the same for the library
// and for who writes what the library shall read.
#pragma once

#include <iconv.h>

#include <span>
#include <string>
#include <string_view>

class Converter {
  public:
    // From the encoding "from" to the encoding "to", by the names that the system has for them.
    Converter(const std::string& to, const std::string& from);
    ~Converter();
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Whether the system knows both. If not, no conversion comes further than kNone.
    [[nodiscard]] bool IsKnown() const;

    // Where a conversion stopped: at the end of the text, at the end of the room, or before bytes
    // that are the first part of a character, or that are none, or one that "to" lacks.
    enum class Stop { kText, kRoom, kPart, kNone };
    // Converts from the front of "text" into the front of "room", and takes off both what was used.
    // Given no text at all, std::string_view(), it puts what an encoding with states still holds.
    Stop Convert(std::string_view& text, std::span<char>& room);

    // The same, appended to "converted". True when that was all of the text.
    bool Convert(std::string_view& text, std::string& converted);

  private:
    iconv_t handle_;
};
