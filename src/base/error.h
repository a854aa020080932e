// What a run has to say: the message of the failure that ends it, and the text for standard error.
//
// A failing step fills the message once and hands its code upwards; nobody above adds to it. Text
// for standard error is kept and printed last, when the run holds no lock any more: whoever reads
// it, or does not, holds up nobody but this run.
#pragma once

#include <string_view>

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

// Keeps "text", whole lines, for standard error.
void Complain(std::string_view text);

// Prints what was kept, in its order; what cannot be printed is lost.
void PrintComplaints();
