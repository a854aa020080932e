#include "xml/rvt_xml_parser.h"

#include <new>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "base/complaints.h"
#include "base/text.h"
#include "xml/file_source.h"
#include "xml/library_memory.h"
#include "xml/rvt_xml_handler.h"

namespace {

// How the parser treats grammars: a document is validated when it names one.
enum class Validation { kNever, kAlways, kAutomatic };
constexpr Validation valScheme = Validation::kAutomatic;
constexpr bool doNamespaces = true;
constexpr bool doSchema = true;
constexpr bool schemaFullChecking = false;
constexpr bool namespacePrefixes = false;

LibraryMemory library_memory;

// The library's reader. Elements go to the handler as the parser has them: what the library makes
// of them for its own handlers takes a fifteenth of a run, and nobody looks at it. Nor do those
// hear all of a content model: they are told its text, but of an element that is declared twice
// that of the first declaration alone, while the second counts.
class Reader : public xercesc::SAX2XMLReaderImpl {
  public:
    Reader(Reading& reading, MyContentHandler& content) : reading_(reading), content_(content) {}

    void elementDecl(const xercesc::DTDElementDecl& element, const bool is_ignored) override {
        CheckContentModel(reading_, element);
        SAX2XMLReaderImpl::elementDecl(element, is_ignored);
    }
    void startElement(const xercesc::XMLElementDecl& element, const unsigned int,
                      const XMLCh* const, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                      const XMLSize_t count, const bool is_empty, const bool) override {
        content_.StartElement(element.getBaseName(), attributes, count);
        if (is_empty) {
            content_.EndElement();
        }
    }
    void endElement(const xercesc::XMLElementDecl&, const unsigned int, const bool,
                    const XMLCh* const) override {
        content_.EndElement();
    }
    void docCharacters(const XMLCh* const, const XMLSize_t, const bool) override {
        content_.Text();
    }
    void ignorableWhitespace(const XMLCh* const, const XMLSize_t, const bool) override {
        content_.Text();
    }

  private:
    Reading& reading_;
    MyContentHandler& content_;
};

void SetFeatures(xercesc::SAX2XMLReader& reader) {
    using xercesc::XMLUni;
    reader.setFeature(XMLUni::fgSAX2CoreValidation, valScheme != Validation::kNever);
    if (valScheme != Validation::kNever) {
        reader.setFeature(XMLUni::fgXercesDynamic, valScheme == Validation::kAutomatic);
    }
    reader.setFeature(XMLUni::fgSAX2CoreNameSpaces, doNamespaces);
    reader.setFeature(XMLUni::fgXercesSchema, doSchema);
    reader.setFeature(XMLUni::fgXercesSchemaFullChecking, schemaFullChecking);
    reader.setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, namespacePrefixes);
    // Files are found by MyEntityHandler alone.
    reader.setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
}

void ParseWithHandlers(const xercesc::InputSource& source, Reading& reading) {
    // The limit on expansions is the library's own; without a manager there is none.
    xercesc::SecurityManager security;
    MyContentHandler content(reading);
    Reader reader(reading, content);
    SetFeatures(reader);
    MyLexicalHandler lexical(reading);
    MyXMLDocumentHandler document(reading);
    MyEntityHandler entities(reading);
    reader.setContentHandler(&content);
    reader.setLexicalHandler(&lexical);
    reader.installAdvDocHandler(&document);
    reader.setDTDHandler(&content);
    reader.setErrorHandler(&content);
    reader.setDeclarationHandler(&entities);
    reader.setXMLEntityResolver(&entities);
    reader.setProperty(xercesc::XMLUni::fgXercesSecurityManager, &security);
    reader.parse(source);
}

// Parses what "make_source" returns; it is called once the library is ready. Whether the library
// got to the end.
template <typename MakeSource>
bool ParseWithLibrary(Reading& reading, MakeSource make_source) {
    try {
        xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                              &library_memory, &library_memory);
    } catch (const xercesc::XMLException& failure) {
        Complain("Error during initialization! :\n" + ToUtf8(failure.getMessage()) + "\n");
        return false;
    }
    bool is_whole = true;
    try {
        ParseWithHandlers(make_source(), reading);
    } catch (const xercesc::XMLException& failure) {
        Complain("\nAn error occurred\n  Error: " + ToUtf8(failure.getMessage()) + "\n\n");
        is_whole = false;
    }
    xercesc::XMLPlatformUtils::Terminate();
    return is_whole;
}

template <typename MakeSource>
Result<bool> Parse(Reading reading, MakeSource make_source) {
    bool is_whole = false;
    try {
        library_memory.Begin(reading);
        is_whole = ParseWithLibrary(reading, make_source);
    } catch (const ReadingFailed&) {
        // The failure is noted.
    } catch (const xercesc::OutOfMemoryException&) {
        library_memory.Fail();
    } catch (const std::bad_alloc&) {
        library_memory.Fail();
    }
    return reading.failure.ok() ? Result(is_whole) : reading.failure;
}

}  // namespace

Result<bool> ParseXMLFile(const std::string& path, RVT_XML_Tree& tree, DocumentPart part) {
    return Parse({.path = path, .tree = &tree, .part = part}, [&path] { return FileSource(path); });
}

Result<bool> ParseXMLText(std::string_view text, const std::string& name, RVT_XML_Tree& tree,
                          DocumentRules rules) {
    return Parse({.path = name, .rules = rules, .size = text.size(), .tree = &tree},
                 [text, &name] { return TextSource(text, name); });
}

Outcome CheckXMLText(std::string_view text, const std::string& name) {
    const Result<bool> is_whole =
        Parse({.path = name, .rules = DocumentRules::kForeign, .size = text.size()},
              [text, &name] { return TextSource(text, name); });
    return is_whole.ok() && !*is_whole ? Outcome(ExitCode::kNotWellFormed, "") : is_whole.outcome();
}

Result<std::vector<size_t>> LinesOfStartTags(std::string_view text, const std::string& name) {
    std::vector<size_t> lines;
    const Result<bool> is_whole = Parse({.path = name, .size = text.size(), .start_lines = &lines},
                                        [text, &name] { return TextSource(text, name); });
    return is_whole.ok() ? Result(std::move(lines)) : is_whole.outcome();
}

struct XMLLibrary::Start {
    Reading reading = {};
};

XMLLibrary::XMLLibrary() : start_(std::make_unique<Start>()) {
    try {
        library_memory.Begin(start_->reading);
        xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                              &library_memory, &library_memory);
    } catch (const xercesc::XMLException&) {
        start_.reset();
    } catch (const xercesc::OutOfMemoryException&) {
        start_.reset();
    } catch (const ReadingFailed&) {
        start_.reset();
    }
}

XMLLibrary::~XMLLibrary() {
    if (start_ != nullptr) {
        xercesc::XMLPlatformUtils::Terminate();
    }
}
