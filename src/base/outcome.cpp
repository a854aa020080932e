#include "base/outcome.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

Outcome Failure(ExitCode code, const char* format, ...) {
    std::array<char, kLongestMessage + 1> message;
    va_list values;
    va_start(values, format);
    // A message that does not fit is cut; there is nothing to do about the rest.
    static_cast<void>(vsnprintf(message.data(), message.size(), format, values));
    va_end(values);
    return {code, message.data()};
}

Outcome SystemFailure(ExitCode code) {
    return {code, strerror(errno)};
}
