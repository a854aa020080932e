// The message of the failure that ends the run. A failing step fills it once and hands its code
// upwards; nobody above adds to it. Only RVTExit prints it.
#pragma once

#include "base/exit_code.h"

// Bytes of the message including its terminating zero; longer messages are cut.
inline constexpr unsigned kErrorMessageSize = 8192;

extern char rvt_err_msg[kErrorMessageSize];

// Formats the message like printf and returns "code", so that failing is one statement:
//     return Fail(ExitCode::kCannotOpen, "Cannot open \"%s\".", path);
[[gnu::format(printf, 2, 3)]] ExitCode Fail(ExitCode code, const char* format, ...);

// Formats the message for a function that fails with a null pointer or a boolean.
[[gnu::format(printf, 1, 2)]] void NoteError(const char* format, ...);

// Fail with the system's text for the present errno as the whole message.
ExitCode FailWithErrno(ExitCode code);

// Empties the message.
void ClearError();
