#include "base/output.h"

#include <algorithm>

#include "base/calls.h"
#include "base/files.h"

void Output::PutSpaces(size_t count) {
    static constexpr std::string_view kBlanks = "                                ";
    for (; count > 0; count -= std::min(count, kBlanks.size())) {
        Put(kBlanks.substr(0, std::min(count, kBlanks.size())));
    }
}

void Output::Write(std::string_view text) {
    if (memory_ != nullptr) {
        *memory_ += text;
    } else {
        failed_ = failed_ || !WriteAll(fd_, text);
        BeginWriteback(text.size());
    }
}

void Output::BeginWriteback(size_t written) {
    static constexpr size_t kPiece = size_t{8} << 20;
    waiting_ += written;
    if (waiting_ >= kPiece) {
        static_cast<void>(calls::BeginWriteback(fd_));
        waiting_ = 0;
    }
}

bool Output::Flush() {
    Write({buffer_, used_});
    used_ = 0;
    return !failed_;
}

void Output::PutLong(std::string_view text) {
    static_cast<void>(Flush());
    while (text.size() > size_) {
        Write(text.substr(0, size_));
        text.remove_prefix(size_);
    }
    Put(text);
}

Outcome LostOutput(const char* name) {
    return Failure(ExitCode::kWriteFailed, "Write failed for \"%s\".", name);
}
