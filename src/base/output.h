// Buffered text for a descriptor: the map, kfx.conf and standard output leave through it. The same
// text can be collected in memory instead.
//
//     Output out(fd);
//     out.Put("text");
//     if (!out.Flush()) { ... what was put did not all arrive ... }
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "base/arena.h"
#include "base/outcome.h"

class Output {
  public:
    // Text up to this many bytes leaves in one write.
    static constexpr size_t kBufferSize = size_t{512} << 10;

    // Writes to "fd", which stays the caller's.
    explicit Output(int fd) : fd_(fd) {}
    // Appends to "memory" instead.
    explicit Output(std::string& memory) : memory_(&memory), size_(kMemoryBufferSize) {}

    void Put(std::string_view text) {
        if (text.size() > size_ - used_) {
            PutLong(text);
            return;
        }
        memcpy(buffer_ + used_, text.data(), text.size());
        used_ += text.size();
    }
    void PutSpaces(size_t count);

    // Hands everything put so far to the system. False when this or an earlier write failed; after
    // a failure nothing more is written.
    [[nodiscard]] bool Flush();
    [[nodiscard]] bool HasFailed() const { return failed_; }

  private:
    void PutLong(std::string_view text);

    void Write(std::string_view text);
    // Has the disk begin with what was written while more is made, when it is much: who then syncs
    // waits for less.
    void BeginWriteback(size_t written);

    // Many small texts are collected in memory, and buffers are never given back.
    static constexpr size_t kMemoryBufferSize = 1024;

    int fd_ = -1;
    std::string* memory_ = nullptr;
    size_t size_ = kBufferSize;
    char* buffer_ = static_cast<char*>(arena::Allocate(size_));
    size_t used_ = 0;
    size_t waiting_ = 0;  // bytes written of which the disk has not been told
    bool failed_ = false;
};

// kWriteFailed "Write failed for \"%s\"." with "name", the file or "standard output".
Outcome LostOutput(const char* name);
