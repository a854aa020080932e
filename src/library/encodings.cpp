// The library's service for encodings: its class is declared in a header of the library and defined
// here. What the library does not read by itself goes through iconv. See library.h.
#include <unicode/uset.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <xercesc/framework/XMLRecognizer.hpp>
#include <xercesc/util/TransENameMap.hpp>
#include <xercesc/util/Transcoders/ICU/ICUTransService.hpp>
#include <xercesc/util/TranscodingException.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUTF8Transcoder.hpp>

#include "base/text.h"
#include "library/converter.h"

XERCES_CPP_NAMESPACE_BEGIN

namespace {

constexpr const char* kUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

class Decoder : public XMLTranscoder {
  public:
    Decoder(const XMLCh* name, XMLSize_t block, MemoryManager* manager)
        : XMLTranscoder(name, block, manager), converter_(kUtf16, ToUtf8(name)) {}

    [[nodiscard]] bool IsKnown() const { return converter_.IsKnown(); }

    // Without the sizes of the characters: the library is not asked for places in bytes.
    XMLSize_t transcodeFrom(const XMLByte* bytes, XMLSize_t count, XMLCh* characters,
                            XMLSize_t most, XMLSize_t& used, unsigned char*) override {
        // Longer than what switches from one set of characters to another.
        constexpr XMLSize_t kLong = 64;
        std::string_view text(reinterpret_cast<const char*>(bytes), count);
        std::span<char> room(reinterpret_cast<char*>(characters), most * sizeof(XMLCh));
        const Converter::Stop stop = converter_.Convert(text, room);
        used = count - text.size();
        if (stop == Converter::Stop::kText && room.size() == most * sizeof(XMLCh)) {
            // This is the end: a converter may hold back a character until it has seen the next.
            std::string_view end;
            converter_.Convert(end, room);
        }
        const XMLSize_t made = most - room.size() / sizeof(XMLCh);
        if (stop == Converter::Stop::kNone || (made == 0 && used > kLong)) {
            ThrowXMLwithMemMgr(TranscodingException, XMLExcepts::Trans_BadSrcSeq,
                               getMemoryManager());
        }
        return made;
    }

    // The library writes nothing.
    XMLSize_t transcodeTo(const XMLCh*, XMLSize_t, XMLByte*, XMLSize_t, XMLSize_t& used,
                          UnRepOpts) override {
        used = 0;
        return 0;
    }
    bool canTranscodeTo(unsigned int) override { return false; }

  private:
    Converter converter_;
};

// The library's own for UTF-8, which takes each byte by itself, after a run of ASCII. What lies
// beyond the last character, U+10FFFF, it would take for one when it begins with F5, F6 or F7.
class Utf8Decoder : public XMLUTF8Transcoder {
  public:
    using XMLUTF8Transcoder::XMLUTF8Transcoder;

    XMLSize_t transcodeFrom(const XMLByte* bytes, XMLSize_t count, XMLCh* characters,
                            XMLSize_t most, XMLSize_t& used, unsigned char* sizes) override {
        const XMLSize_t ascii = PassAscii({bytes, std::min(count, most)}, characters);
        used = 0;
        const XMLSize_t made = XMLUTF8Transcoder::transcodeFrom(
            bytes + ascii, count - ascii, characters + ascii, most - ascii, used, sizes);
        const auto is_beyond = [](XMLByte byte) { return byte > 0xF4; };
        if (std::any_of(bytes + ascii, bytes + ascii + used, is_beyond)) {
            ThrowXMLwithMemMgr(TranscodingException, XMLExcepts::Trans_BadSrcSeq,
                               getMemoryManager());
        }
        used += ascii;
        return ascii + made;
    }

  private:
    // How much of the front of "bytes" is ASCII, in whole words.
    static XMLSize_t PassAscii(std::span<const XMLByte> bytes, XMLCh* characters) {
        constexpr uint64_t kBeyondAscii = 0x8080808080808080;
        std::array<XMLByte, sizeof kBeyondAscii> piece{};
        XMLSize_t passed = 0;
        for (; passed + piece.size() <= bytes.size(); passed += piece.size()) {
            // A copy, so that the compiler knows it from the characters.
            std::copy_n(&bytes[passed], piece.size(), piece.begin());
            if ((std::bit_cast<uint64_t>(piece) & kBeyondAscii) != 0) {
                break;
            }
            std::ranges::copy(piece, characters + passed);
        }
        return passed;
    }
};

// What the library takes for the encoding of the user's texts is the program's own. It asks for
// numbers, names of time zones and the like alone.
class OwnText : public XMLLCPTranscoder {
  public:
    char* transcode(const XMLCh* text, MemoryManager* manager) override {
        return XMLString::replicate(ToUtf8(text).c_str(), manager);
    }
    XMLCh* transcode(const char* text, MemoryManager* manager) override {
        return XMLString::replicate(ToUtf16(text).c_str(), manager);
    }
    XMLSize_t calcRequiredSize(const char* text, MemoryManager*) override {
        return ToUtf16(text).size();
    }
    XMLSize_t calcRequiredSize(const XMLCh* text, MemoryManager*) override {
        return ToUtf8(text).size();
    }
    bool transcode(const char* text, XMLCh* copy, XMLSize_t most, MemoryManager*) override {
        return XMLString::copyNString(copy, ToUtf16(text).c_str(), most);
    }
    bool transcode(const XMLCh* text, char* copy, XMLSize_t most, MemoryManager*) override {
        const std::string utf8 = ToUtf8(text);
        copy[utf8.copy(copy, most)] = '\0';
        return utf8.size() <= most;
    }
};

}  // namespace

ICUTransService::ICUTransService(MemoryManager*) {}
ICUTransService::~ICUTransService() = default;

const XMLCh* ICUTransService::getId() const {
    return u"iconv";
}
bool ICUTransService::supportsSrcOfs() const {
    return false;
}

XMLTranscoder* ICUTransService::makeNewXMLTranscoder(const XMLCh* name, Codes& result,
                                                     XMLSize_t block, MemoryManager* manager) {
    auto* decoder = new (manager) Decoder(name, block, manager);
    if (!decoder->IsKnown()) {
        delete decoder;
        decoder = nullptr;
        result = UnsupportedEncoding;
    }
    return decoder;
}
// The library calls this as soon as it has entered its own encodings into its tables.
XMLLCPTranscoder* ICUTransService::makeNewLCPTranscoder(MemoryManager* manager) {
    gMappingsRecognizer->setElementAt(new ENameMapFor<Utf8Decoder>(XMLUni::fgUTF8EncodingString),
                                      XMLRecognizer::UTF_8);
    // The first is also the name that a document without a declaration is read by.
    for (const XMLCh* name : {XMLUni::fgUTF8EncodingString, XMLUni::fgUTF8EncodingString2}) {
        addEncoding(name, new ENameMapFor<Utf8Decoder>(name));
    }
    return new (manager) OwnText;
}

// Names of protocols alone are compared or changed in letter case.
int ICUTransService::compareIString(const XMLCh* one, const XMLCh* other) {
    return XMLString::compareIStringASCII(one, other);
}
int ICUTransService::compareNIString(const XMLCh* one, const XMLCh* other, XMLSize_t count) {
    return XMLString::compareNString(one, other, count);
}
void ICUTransService::upperCase(XMLCh* text) {
    XMLString::upperCaseASCII(text);
}
void ICUTransService::lowerCase(XMLCh* text) {
    XMLString::lowerCaseASCII(text);
}

XERCES_CPP_NAMESPACE_END

// Sets of characters without letter case: only patterns with an option that schemas do not have ask
// for one, and where there is none they do without.
USet* uset_openPatternOptions(const UChar*, int32_t, uint32_t, UErrorCode*) {
    return nullptr;
}
void uset_close(USet*) {}
int32_t uset_serialize(const USet*, uint16_t*, int32_t, UErrorCode*) {
    return 0;
}
UBool uset_getSerializedSet(USerializedSet*, const uint16_t*, int32_t) {
    return 0;
}
void uset_setSerializedToOne(USerializedSet*, UChar32) {}
int32_t uset_getSerializedRangeCount(const USerializedSet*) {
    return 0;
}
UBool uset_getSerializedRange(const USerializedSet*, int32_t, UChar32*, UChar32*) {
    return 0;
}
