#include "xml/file_source.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "base/text.h"

namespace {

class FileStream : public xercesc::BinInputStream {
  public:
    explicit FileStream(FileDescriptor file) : file_(std::move(file)) {}

    [[nodiscard]] XMLFilePos curPos() const override { return position_; }
    [[nodiscard]] const XMLCh* getContentType() const override { return nullptr; }

    XMLSize_t readBytes(XMLByte* const buffer, const XMLSize_t size) override {
        const ssize_t got = ReadOnce(file_.get(), buffer, size);
        if (got < 0) {
            using namespace xercesc;
            ThrowXML(XMLPlatformUtilsException, XMLExcepts::File_CouldNotReadFromFile);
        }
        position_ += static_cast<XMLFilePos>(got);
        return static_cast<XMLSize_t>(got);
    }

  private:
    FileDescriptor file_;
    XMLFilePos position_ = 0;
};

class TextStream : public xercesc::BinInputStream {
  public:
    explicit TextStream(std::string_view text) : text_(text) {}

    [[nodiscard]] XMLFilePos curPos() const override { return position_; }
    [[nodiscard]] const XMLCh* getContentType() const override { return nullptr; }

    XMLSize_t readBytes(XMLByte* const buffer, const XMLSize_t size) override {
        const size_t count = std::min<size_t>(size, text_.size() - position_);
        std::copy_n(text_.data() + position_, count, buffer);
        position_ += count;
        return count;
    }

  private:
    std::string_view text_;
    size_t position_ = 0;
};

}  // namespace

FileSource::FileSource(std::string path) : FileSource(std::move(path), {}) {}

FileSource::FileSource(std::string path, FileDescriptor file)
    : InputSource(ToUtf16(path).c_str()), path_(std::move(path)), file_(std::move(file)) {}

xercesc::BinInputStream* FileSource::makeStream() const {
    FileDescriptor file = file_.IsOpen() ? std::move(file_) : OpenForReading(path_);
    return file.IsOpen() ? new FileStream(std::move(file)) : nullptr;
}

TextSource::TextSource(std::string_view text, std::string_view name)
    : InputSource(ToUtf16(name).c_str()), text_(text) {}

xercesc::BinInputStream* TextSource::makeStream() const {
    return new TextStream(text_);
}
