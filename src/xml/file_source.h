// Files and memory as input of the XML parser, read through the program's own calls.
#pragma once

#include <string>
#include <string_view>
#include <xercesc/sax/InputSource.hpp>

#include "base/files.h"

// The file "path", taken by its bytes and read through a descriptor.
class FileSource : public xercesc::InputSource {
  public:
    // A source whose file is opened when the parser asks for it. A file that cannot be opened, or
    // read, is the parser's fatal error, also where the parser would rather do without.
    explicit FileSource(std::string path);
    // The same of a file that is open already.
    FileSource(std::string path, FileDescriptor file);

    [[nodiscard]] xercesc::BinInputStream* makeStream() const override;
    [[nodiscard]] bool getIssueFatalErrorIfNotFound() const override { return true; }

  private:
    std::string path_;
    mutable FileDescriptor file_;  // until the parser asks for it; not open: "path" is opened then
};

// Text in memory, which stays the caller's, under a name for messages.
class TextSource : public xercesc::InputSource {
  public:
    TextSource(std::string_view text, std::string_view name);

    [[nodiscard]] xercesc::BinInputStream* makeStream() const override;

  private:
    std::string_view text_;
};
