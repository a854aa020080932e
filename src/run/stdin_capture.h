// The standard input of -update cache, captured in a temporary file. The file has lost its name by
// the time anything is read, so it is gone with the run however the run ends.
#pragma once

#include <string>
#include <string_view>

#include "base/files.h"
#include "base/outcome.h"

class CapturedInput {
  public:
    CapturedInput() = default;
    ~CapturedInput();
    CapturedInput(const CapturedInput&) = delete;
    CapturedInput& operator=(const CapturedInput&) = delete;

    // Copies standard input to a new file, each line up to its first zero byte (a line that has one
    // loses its line end with the rest). A read error counts as the end. kCannotOpen "Cannot create
    // temp file." or "Cannot open
    // \"%s\"."; kWriteFailed "Cannot write to \"%s\".".
    Outcome WriteStdInToTempFile();

    // What was captured, valid as long as this object.
    [[nodiscard]] std::string_view Text() const { return text_; }
    // The name that the file had, for messages.
    [[nodiscard]] const std::string& Name() const { return name_; }

  private:
    std::string name_;
    FileDescriptor file_;
    std::string_view text_;  // a mapping of the file
};
