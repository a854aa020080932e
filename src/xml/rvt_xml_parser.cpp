#include "xml/rvt_xml_parser.h"

#include <new>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "base/error.h"
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

// Everything that the library needs at its start is part of the program, so when it cannot go on
// there, or says no more than that something failed, it lacks memory.
class StartHandler : public xercesc::PanicHandler {
  public:
    void panic(const PanicReasons) override { library_memory.EndRun(); }
};

// The library's reader. The handlers are told the text of a content model, but of an element that
// is declared twice that of the first declaration alone, while the second counts.
class Reader : public xercesc::SAX2XMLReaderImpl {
  public:
    explicit Reader(const DocumentInfo& info) : info_(info) {}

    void elementDecl(const xercesc::DTDElementDecl& element, const bool is_ignored) override {
        CheckContentModel(info_, element);
        SAX2XMLReaderImpl::elementDecl(element, is_ignored);
    }

  private:
    const DocumentInfo& info_;
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

void ParseWithHandlers(const xercesc::InputSource& source, DocumentInfo& info) {
    // The limit on expansions is the library's own; without a manager there is none.
    xercesc::SecurityManager security;
    Reader reader(info);
    SetFeatures(reader);
    MyContentHandler content(info);
    MyLexicalHandler lexical(info);
    MyXMLDocumentHandler document(info);
    MyEntityHandler entities(info);
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

// Parses what "make_source" returns; it is called once the library is ready.
template <typename MakeSource>
int ParseWithLibrary(DocumentInfo& info, MakeSource make_source) {
    static StartHandler start_handler;
    try {
        xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                              &start_handler, &library_memory);
    } catch (const xercesc::XMLException& failure) {
        Complain("Error during initialization! :\n" + ToUtf8(failure.getMessage()) + "\n");
        return 1;
    }
    int result = 0;
    try {
        ParseWithHandlers(make_source(), info);
    } catch (const xercesc::XMLException& failure) {
        Complain("\nAn error occurred\n  Error: " + ToUtf8(failure.getMessage()) + "\n\n");
        result = 4;
    }
    xercesc::XMLPlatformUtils::Terminate();
    return result;
}

// ParseWithLibrary, ending the run where the memory ends that the handlers need.
template <typename MakeSource>
int Parse(DocumentInfo info, RVT_XML_Tree* tree, MakeSource make_source) {
    SetXMLTree(tree);
    library_memory.Begin(info);
    try {
        return ParseWithLibrary(info, make_source);
    } catch (const xercesc::OutOfMemoryException&) {
        library_memory.EndRun();
    } catch (const std::bad_alloc&) {
        library_memory.EndRun();
    }
}

}  // namespace

int ParseXMLFile(const char* path, RVT_XML_Tree* tree, DocumentRules rules) {
    return Parse({path, rules}, tree, [path] { return FileSource(path); });
}

int ParseXMLText(std::string_view text, const char* name, RVT_XML_Tree* tree) {
    return Parse({name, DocumentRules::kForeign, text.size()}, tree,
                 [text, name] { return TextSource(text, name); });
}

int CheckXMLText(std::string_view text, const char* name) {
    return ParseXMLText(text, name, nullptr);
}
