#include "run/stdin_capture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/calls.h"
#include "base/paths.h"

// Reads once from standard input; 0 at its end and on an error.
static size_t ReadStdIn(char* buffer, size_t size) {
    return static_cast<size_t>(std::max<ssize_t>(ReadOnce(STDIN_FILENO, buffer, size), 0));
}

namespace {

// Drops the rest of each line from its first zero byte on, line end included.
class ZeroByteFilter {
  public:
    // Filters the first "size" bytes of "buffer" in place and returns how many are left.
    size_t Apply(char* buffer, size_t size) {
        size_t kept = 0;
        for (size_t i = 0; i < size; ++i) {
            const char c = buffer[i];
            skipping_ = skipping_ || c == '\0';
            if (!skipping_) {
                buffer[kept++] = c;
            }
            skipping_ = skipping_ && c != '\n';
        }
        return kept;
    }

  private:
    bool skipping_ = false;
};

}  // namespace

Outcome CapturedInput::WriteStdInToTempFile() {
    name_ = paths::kStdInCopy;
    file_ = FileDescriptor(calls::Mkstemp(name_.data()));
    if (!file_.IsOpen()) {
        return Failure(ExitCode::kCannotOpen, "Cannot create temp file.");
    }
    static_cast<void>(calls::Unlink(calls::kHere, name_.c_str()));
    std::array<char, 65536> buffer;
    ZeroByteFilter filter;
    size_t total = 0;
    for (size_t got = ReadStdIn(buffer.data(), buffer.size()); got > 0;
         got = ReadStdIn(buffer.data(), buffer.size())) {
        const size_t kept = filter.Apply(buffer.data(), got);
        if (!WriteAll(file_.get(), {buffer.data(), kept})) {
            return Failure(ExitCode::kWriteFailed, "Cannot write to \"%s\".", name_.c_str());
        }
        total += kept;
    }
    if (total > 0) {
        void* mapping = mmap(nullptr, total, PROT_READ, MAP_PRIVATE, file_.get(), 0);
        if (mapping == MAP_FAILED) {
            return Failure(ExitCode::kCannotOpen, "Cannot open \"%s\".", name_.c_str());
        }
        text_ = {static_cast<const char*>(mapping), total};
    }
    return {};
}

CapturedInput::~CapturedInput() {
    if (!text_.empty()) {
        munmap(const_cast<char*>(text_.data()), text_.size());
    }
}
