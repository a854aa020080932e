#include "base/output.h"

#include <algorithm>

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
