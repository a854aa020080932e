#include "base/error.h"

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/files.h"

char rvt_err_msg[kErrorMessageSize];

static std::string complaints;

ExitCode Fail(ExitCode code, const char* format, ...) {
    va_list values;
    va_start(values, format);
    // A message that does not fit is cut; there is nothing to do about the rest.
    static_cast<void>(vsnprintf(rvt_err_msg, sizeof rvt_err_msg, format, values));
    va_end(values);
    return code;
}

void NoteError(const char* format, ...) {
    va_list values;
    va_start(values, format);
    static_cast<void>(vsnprintf(rvt_err_msg, sizeof rvt_err_msg, format, values));
    va_end(values);
}

ExitCode FailWithErrno(ExitCode code) {
    return Fail(code, "%s", strerror(errno));
}

void ClearError() {
    rvt_err_msg[0] = '\0';
}

void Complain(std::string_view text) {
    complaints += text;
}

void PrintComplaints() {
    static_cast<void>(WriteAll(STDERR_FILENO, complaints));
    complaints.clear();
}
