#include "base/outcome.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include "base/error.h"

Outcome Failure(ExitCode code, const char* format, ...) {
    std::array<char, kErrorMessageSize> message;
    va_list values;
    va_start(values, format);
    // A message that does not fit is cut; there is nothing to do about the rest.
    static_cast<void>(vsnprintf(message.data(), message.size(), format, values));
    va_end(values);
    return {code, message.data()};
}

ExitCode Report(const Outcome& outcome) {
    return outcome.ok() ? ExitCode::kOk : Fail(outcome.code(), "%s", outcome.message().c_str());
}
