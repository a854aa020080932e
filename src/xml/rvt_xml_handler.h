// The parser's callbacks: they turn events into tree nodes and errors into the failure of the
// reading.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLDocumentHandler.hpp>
#include <xercesc/sax2/DeclHandler.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/LexicalHandler.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>

#include "base/outcome.h"
#include "xml/rvt_node_stack.h"
#include "xml/rvt_xml_parser.h"

// A document that is being read: what the handlers know of it, and what they have made so far.
struct Reading {
    std::string path;  // as messages name it: by its bytes
    DocumentRules rules = DocumentRules::kMap;
    size_t size = 0;                            // bytes of a foreign document
    RVT_XML_Tree* tree = nullptr;               // to be filled; null to keep nothing
    DocumentPart part = DocumentPart::kWhole;   // what the tree is to hold
    bool in_document_type = false;              // whether the parser is in the document type
    const xercesc::Locator* locator = nullptr;  // where the parser is
    RVT_Node_Stack open_elements = {};
    Outcome failure = {};  // the first one
    // Receives the line in which each start tag begins; null when nobody asks.
    std::vector<size_t>* start_lines = nullptr;
    size_t last_line = 1;  // where the last event ended, while somebody asks

    // Whether what stands where the parser is belongs to the part that is kept.
    [[nodiscard]] bool Keeps() const {
        return tree != nullptr && (part == DocumentPart::kWhole || open_elements.IsEmpty());
    }
    // Appends a finished node to the innermost open element, or to the document.
    void Append(RVT_Node* node);
    // Notes where an event has ended.
    void NotePlace();
    // Notes the failure, unless there is one, at the place where the parser is.
    void Fail(const std::string& text);
};

// What the handlers leave by, and Parse catches, once the failure is noted. The library may catch
// it before that, but goes on to no effect.
struct ReadingFailed {};

// Notes a failure and leaves.
[[noreturn]] void Refuse(Reading& reading, const std::string& text);

// The refusal of a reference to another file.
[[noreturn]] void RefuseReference(Reading& reading, const XMLCh* system_id);

// Refuses a content model of more than MyEntityHandler::kMostNames names in a foreign document, and
// one nested so deep that the library would run out of stack.
void CheckContentModel(Reading& reading, const xercesc::DTDElementDecl& element);

// Elements and errors.
class MyContentHandler : public xercesc::DefaultHandler {
  public:
    explicit MyContentHandler(Reading& reading) : reading_(reading) {}

    void setDocumentLocator(const xercesc::Locator* locator) override {
        reading_.locator = locator;
    }
    using Attributes = xercesc::RefVectorOf<xercesc::XMLAttr>;

    // An element of the local name "name" with the first "count" of "attributes", declarations of
    // namespaces among them; its end; and text in it.
    void StartElement(const XMLCh* name, const Attributes& attributes, size_t count);
    void EndElement();
    void Text();

    void processingInstruction(const XMLCh*, const XMLCh*) override { reading_.NotePlace(); }

    void warning(const xercesc::SAXParseException& exception) override;
    void error(const xercesc::SAXParseException& exception) override;
    void fatalError(const xercesc::SAXParseException& exception) override;

    // What a document type may name outside the document, which a foreign one must not.
    void notationDecl(const XMLCh* name, const XMLCh* public_id, const XMLCh* system_id) override;
    void unparsedEntityDecl(const XMLCh* name, const XMLCh* public_id, const XMLCh* system_id,
                            const XMLCh* notation) override;

  private:
    // Up to so many attributes, and some more, the library finds two of one name by itself; the
    // table that it has for more is left empty in attribute_table.cpp.
    static constexpr size_t kFewAttributes = 16;

    void NoteStart();
    void CheckNames(const XMLCh* element, const Attributes& attributes, size_t count) const;
    RVT_Node* NewElement(const XMLCh* name);
    void CheckGrowth(const RVT_Node& attribute);

    Reading& reading_;
    std::vector<const xercesc::XMLAttr*> attributes_;  // of the present element
    size_t attribute_bytes_ = 0;  // names and values of all attributes up to here
};

// Comments, and where the document type is.
class MyLexicalHandler : public xercesc::LexicalHandler {
  public:
    explicit MyLexicalHandler(Reading& reading) : reading_(reading) {}

    void comment(const XMLCh* text, XMLSize_t length) override;
    void startDTD(const XMLCh*, const XMLCh*, const XMLCh*) override {
        reading_.in_document_type = true;
    }
    void endDTD() override { reading_.in_document_type = false; }
    void startEntity(const XMLCh*) override {}
    void endEntity(const XMLCh*) override {}
    void startCDATA() override {}
    void endCDATA() override {}

  private:
    Reading& reading_;
};

// The XML declaration.
class MyXMLDocumentHandler : public xercesc::XMLDocumentHandler {
  public:
    explicit MyXMLDocumentHandler(Reading& reading) : reading_(reading) {}

    void XMLDecl(const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone,
                 const XMLCh* actual_encoding) override;

    void docCharacters(const XMLCh*, XMLSize_t, bool) override { reading_.NotePlace(); }
    void docComment(const XMLCh*) override {}
    void docPI(const XMLCh*, const XMLCh*) override {}
    void startDocument() override {}
    void endDocument() override {}
    void startElement(const xercesc::XMLElementDecl&, unsigned int, const XMLCh*,
                      const xercesc::RefVectorOf<xercesc::XMLAttr>&, XMLSize_t, bool,
                      bool) override {}
    void endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) override {}
    void startEntityReference(const xercesc::XMLEntityDecl&) override {}
    void endEntityReference(const xercesc::XMLEntityDecl&) override {}
    void ignorableWhitespace(const XMLCh*, XMLSize_t, bool) override {}
    void resetDocument() override {}

  private:
    Reading& reading_;
};

// Entities and other declarations: how large one may be, and which files a document may name.
class MyEntityHandler : public xercesc::DeclHandler, public xercesc::XMLEntityResolver {
  public:
    // Characters that an internal entity, or the default of an attribute, may have; together with
    // the limit on the number of expansions this bounds what a document can grow to.
    static constexpr size_t kLongestEntity = 1024;

    // Tokens of an enumeration, names of a content model, and attributes declared for an element in
    // a foreign document: what the library does with them takes the square of their number, or is
    // done again for each element.
    static constexpr size_t kMostNames = 1024;

    explicit MyEntityHandler(Reading& reading) : reading_(reading) {}

    void elementDecl(const XMLCh*, const XMLCh*) override {}
    void attributeDecl(const XMLCh* element, const XMLCh* attribute, const XMLCh* type,
                       const XMLCh* mode, const XMLCh* value) override;
    void internalEntityDecl(const XMLCh* name, const XMLCh* value) override;
    void externalEntityDecl(const XMLCh* name, const XMLCh* public_id,
                            const XMLCh* system_id) override;
    xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* identifier) override;

  private:
    Reading& reading_;
    std::map<std::u16string, size_t> attributes_;  // declared for each element
};
