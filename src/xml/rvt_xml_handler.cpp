#include "xml/rvt_xml_handler.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <utility>
#include <vector>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

#include "base/calls.h"
#include "base/complaints.h"
#include "base/text.h"
#include "library/library.h"
#include "xml/encoding.h"
#include "xml/file_source.h"
#include "xml/parsed_text.h"

void Reading::Append(RVT_Node* node) {
    if (open_elements.IsEmpty()) {
        tree->AddChild(node);
    } else {
        open_elements.Peek()->AddChild(node);
    }
}

static bool IsXmlns(const XMLCh* name) {
    return *name == u'x' && std::u16string_view(name) == u"xmlns";
}

static bool IsDeclaration(const xercesc::XMLAttr& attribute) {
    const bool has_prefix = *attribute.getPrefix() != 0;
    return IsXmlns(has_prefix ? attribute.getPrefix() : attribute.getName());
}

// Names that would make the written document another one: the map has local names alone, so two
// attributes of one element may differ in their prefix only before they are read, and "xmlns" would
// become a declaration. Where no attribute has a prefix and they are few, the parser sees to both.
void MyContentHandler::CheckNames(const XMLCh* element, const Attributes& attributes,
                                  size_t count) const {
    std::set<std::pair<unsigned int, std::u16string_view>> names;
    for (size_t i = 0; i < count; ++i) {
        const xercesc::XMLAttr& attribute = *attributes.elementAt(i);
        const bool is_declaration = IsDeclaration(attribute);
        if (!is_declaration && std::u16string_view(attribute.getName()) == u"xmlns") {
            Refuse(reading_, "attribute with the local name 'xmlns' is not allowed");
        }
        const bool has_namespace = is_declaration || reading_.rules == DocumentRules::kForeign;
        if (!names.emplace(has_namespace ? attribute.getURIId() : 0, attribute.getName()).second) {
            Refuse(reading_, "attribute '" + ToUtf8(attribute.getName()) +
                                 "' is already specified for element '" + ToUtf8(element) + "'");
        }
    }
}

// Entities and defaults may make a foreign document somewhat larger than it is, not hundreds of
// times.
void MyContentHandler::CheckGrowth(const RVT_Node& attribute) {
    static constexpr size_t kGrowth = size_t{64} << 20;
    if (reading_.rules == DocumentRules::kForeign) {
        attribute_bytes_ += attribute.GetName().size() + strlen(attribute.GetValue());
        if (attribute_bytes_ > reading_.size + kGrowth) {
            Refuse(reading_, "the attribute values grow too large");
        }
    }
}

RVT_Node* MyContentHandler::NewElement(const XMLCh* name) {
    RVT_Node* element = RVT_Node::Create(RVT_ELEMENT);
    element->SetName(ParsedName(name));
    RVT_Node* node = element->AddAttributes(attributes_.size());
    for (const xercesc::XMLAttr* attribute : attributes_) {
        node->SetName(ParsedName(attribute->getName()));
        node->SetKeptValue(ParsedValue(attribute->getValue()));
        CheckGrowth(*node);
        ++node;
    }
    return element;
}

// A document nested too deep has its own text and code, and no message.
[[noreturn]] static void LeaveForStack(Reading& reading, const char* text) {
    Complain(text);
    reading.failure = Outcome(ExitCode::kNodeStack, "");
    throw ReadingFailed();
}

void MyContentHandler::StartElement(const XMLCh* name, const Attributes& attributes, size_t count) {
    NoteStart();
    attributes_.clear();
    bool has_prefix = false;
    for (size_t i = 0; i < count; ++i) {
        const xercesc::XMLAttr* attribute = attributes.elementAt(i);
        if (!IsDeclaration(*attribute)) {
            attributes_.push_back(attribute);
            has_prefix = has_prefix || *attribute->getPrefix() != 0;
        }
    }
    if (has_prefix || count > kFewAttributes) {
        CheckNames(name, attributes, count);
    }
    // What is not kept is checked all the same, and counted while it is open.
    RVT_Node* element = reading_.Keeps() ? NewElement(name) : nullptr;
    if (!reading_.open_elements.Push(element)) {
        LeaveForStack(reading_, "RVT_Node_Stack::Push(): stack overflow\n");
    }
}

void MyContentHandler::EndElement() {
    RVT_Node* element = reading_.open_elements.Peek();
    if (!reading_.open_elements.Pop()) {
        LeaveForStack(reading_, "RVT_Node_Stack::Pop(): stack underflow\n");
    }
    if (element != nullptr) {
        reading_.Append(element);
    }
    reading_.NotePlace();
}

void MyContentHandler::Text() {
    if (!reading_.open_elements.IsEmpty()) {
        reading_.NotePlace();
    }
}

void Reading::NotePlace() {
    if (start_lines != nullptr && locator != nullptr) {
        last_line = static_cast<size_t>(locator->getLineNumber());
    }
}

// A tag begins where what stands before it ends; of what stands before the root the parser does not
// tell, so that one's end serves.
void MyContentHandler::NoteStart() {
    if (reading_.start_lines != nullptr) {
        const size_t before = reading_.last_line;
        reading_.NotePlace();
        reading_.start_lines->push_back(reading_.start_lines->empty() ? reading_.last_line
                                                                      : before);
    }
}

// The file that an error is in. The document itself is named by its bytes, which its system
// identifier may not be able to hold.
static std::string FileOf(const XMLCh* system_id, const Reading& reading) {
    if (system_id == nullptr || *system_id == 0 || system_id == ToUtf16(reading.path)) {
        return reading.path;
    }
    return ToUtf8(system_id);
}

// "error" for one of validation.
static Outcome NotWellFormed(const char* error, const std::string& file, XMLFileLoc line,
                             XMLFileLoc column, const std::string& text) {
    return Failure(ExitCode::kNotWellFormed, "%s at file %s, line %llu, char %llu.\n   %s", error,
                   file.c_str(), static_cast<unsigned long long>(line),
                   static_cast<unsigned long long>(column), text.c_str())
        .WithCause({line == 0 ? file : file + ":" + std::to_string(line), text});
}

void Reading::Fail(const std::string& text) {
    if (failure.ok()) {
        failure = locator == nullptr
                      ? NotWellFormed("Error", path, 0, 0, text)
                      : NotWellFormed("Error", FileOf(locator->getSystemId(), *this),
                                      locator->getLineNumber(), locator->getColumnNumber(), text);
    }
}

void Refuse(Reading& reading, const std::string& text) {
    reading.Fail(text);
    throw ReadingFailed();
}

[[noreturn]] static void Refuse(Reading& reading, const char* error,
                                const xercesc::SAXParseException& exception) {
    if (reading.failure.ok()) {
        reading.failure = NotWellFormed(error, FileOf(exception.getSystemId(), reading),
                                        exception.getLineNumber(), exception.getColumnNumber(),
                                        ToUtf8(exception.getMessage()));
    }
    throw ReadingFailed();
}

void MyContentHandler::error(const xercesc::SAXParseException& exception) {
    Refuse(reading_, "error", exception);
}

void MyContentHandler::fatalError(const xercesc::SAXParseException& exception) {
    Refuse(reading_, "Error", exception);
}

void MyContentHandler::warning(const xercesc::SAXParseException& exception) {
    Complain("\nWarning at file " + FileOf(exception.getSystemId(), reading_) + ", line " +
             std::to_string(exception.getLineNumber()) + ", char " +
             std::to_string(exception.getColumnNumber()) +
             "\n  Message: " + ToUtf8(exception.getMessage()) + "\n");
}

void MyLexicalHandler::comment(const XMLCh* text, XMLSize_t length) {
    reading_.NotePlace();
    if (!reading_.Keeps()) {
        return;
    }
    RVT_Node* comment = RVT_Node::Create(RVT_COMMENT);
    std::string utf8;
    AppendUtf8({text, length}, utf8);
    comment->SetValue(utf8);
    reading_.Append(comment);
}

void MyXMLDocumentHandler::XMLDecl(const XMLCh* version, const XMLCh* encoding,
                                   const XMLCh* standalone, const XMLCh*) {
    if (reading_.tree == nullptr) {
        return;
    }
    // The parser takes whatever begins with "1.", also what could not be written back as it is.
    if (version != nullptr &&
        std::u16string_view(version).find_first_not_of(u"0123456789.") != std::u16string::npos) {
        Refuse(reading_, "unsupported XML version '" + ToUtf8(version) + "'");
    }
    if (encoding != nullptr && reading_.rules == DocumentRules::kMap &&
        !CanWriteIn(ToUtf8(encoding))) {
        Refuse(reading_, "no map can be written in the encoding '" + ToUtf8(encoding) + "'");
    }
    RVT_Node* declaration = RVT_Node::Create(RVT_XML_DECL);
    const auto add = [declaration](std::string_view name, const XMLCh* text) {
        if (text != nullptr && *text != 0) {
            RVT_Node* attribute = declaration->AddAttributes(1);
            attribute->SetName(name);
            attribute->SetKeptValue(ParsedValue(text));
        }
    };
    add("version", version);
    add("encoding", encoding);
    add("standalone", standalone);
    reading_.tree->AddChild(declaration);
}

static size_t CharactersIn(std::u16string_view text) {
    const auto is_low_surrogate = [](char16_t unit) { return (unit & 0xFC00U) == 0xDC00U; };
    return text.size() -
           static_cast<size_t>(std::count_if(text.begin(), text.end(), is_low_surrogate));
}

// Refuses the text of an entity or default, called "what" in the message, that is too long.
static void CheckLength(Reading& reading, const std::string& what, const XMLCh* text) {
    if (CharactersIn(text) > MyEntityHandler::kLongestEntity) {
        Refuse(reading, what + " is longer than " +
                            std::to_string(MyEntityHandler::kLongestEntity) + " characters");
    }
}

void MyEntityHandler::internalEntityDecl(const XMLCh* name, const XMLCh* value) {
    CheckLength(reading_, "the value of entity '" + ToUtf8(name) + "'", value);
}

// Refuses "what" of a foreign document when it has more than kMostNames "parts".
static void CheckNumber(Reading& reading, const std::string& what, size_t number,
                        const std::string& parts) {
    if (reading.rules == DocumentRules::kForeign && number > MyEntityHandler::kMostNames) {
        Refuse(reading, what + " has more than " + std::to_string(MyEntityHandler::kMostNames) +
                            " " + parts);
    }
}

void MyEntityHandler::attributeDecl(const XMLCh* element, const XMLCh* attribute, const XMLCh* type,
                                    const XMLCh*, const XMLCh* value) {
    const std::u16string_view text(type);
    const auto bars = static_cast<size_t>(std::count(text.begin(), text.end(), u'|'));
    CheckNumber(reading_, "the enumeration of attribute '" + ToUtf8(attribute) + "'", bars + 1,
                "tokens");
    CheckNumber(reading_, "element '" + ToUtf8(element) + "'", ++attributes_[element],
                "attributes");
    if (value != nullptr) {
        CheckLength(reading_, "the default of attribute '" + ToUtf8(attribute) + "'", value);
    }
}

// Whether a node of a content model is a name, #PCDATA being none.
static bool IsName(const xercesc::ContentSpecNode& node) {
    return node.getType() == xercesc::ContentSpecNode::Leaf &&
           node.getElement()->getURI() != xercesc::XMLElementDecl::fgPCDataElemId;
}

void CheckContentModel(Reading& reading, const xercesc::DTDElementDecl& element) {
    // A name takes three nodes: one that joins it to the next, one where it is repeated, and its
    // own.
    static constexpr size_t kMostNodes = 4 * MyEntityHandler::kMostNames;
    if (reading.rules != DocumentRules::kForeign) {
        return;
    }
    size_t nodes = 0;
    size_t names = 0;
    std::vector<const xercesc::ContentSpecNode*> left = {element.getContentSpec()};
    while (!left.empty()) {
        const xercesc::ContentSpecNode* node = left.back();
        left.pop_back();
        if (node != nullptr) {
            ++nodes;
            names += IsName(*node) ? 1 : 0;
            left.push_back(node->getFirst());
            left.push_back(node->getSecond());
        }
    }
    const std::string what = "the content model of element '" + ToUtf8(element.getFullName()) + "'";
    CheckNumber(reading, what, names, "names");
    if (nodes > kMostNodes) {
        Refuse(reading, what + " is nested too deep");
    }
}

void RefuseReference(Reading& reading, const XMLCh* system_id) {
    Refuse(reading, "reference to '" + ToUtf8(system_id) + "' is not allowed");
}

// An entity would bring a file's content into the map, a parameter entity through another's value.
void MyEntityHandler::externalEntityDecl(const XMLCh*, const XMLCh*, const XMLCh* system_id) {
    RefuseReference(reading_, system_id);
}

void MyContentHandler::notationDecl(const XMLCh*, const XMLCh*, const XMLCh* system_id) {
    if (reading_.rules == DocumentRules::kForeign && system_id != nullptr) {
        RefuseReference(reading_, system_id);
    }
}

void MyContentHandler::unparsedEntityDecl(const XMLCh*, const XMLCh*, const XMLCh* system_id,
                                          const XMLCh*) {
    if (reading_.rules == DocumentRules::kForeign) {
        RefuseReference(reading_, system_id);
    }
}

// The value of a hexadecimal digit; -1 for another character.
static int DigitValue(char c) {
    const size_t value = std::string_view("0123456789abcdef").find(LowerCase(c));
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

// The path of a URL, whose escapes (%20) stand for bytes; empty when one is malformed, or would end
// the path.
static std::string Decoded(std::string_view path) {
    std::string decoded;
    for (; !path.empty(); path.remove_prefix(1)) {
        if (path[0] != '%') {
            decoded += path[0];
            continue;
        }
        const int high = path.size() < 3 ? -1 : DigitValue(path[1]);
        const int low = path.size() < 3 ? -1 : DigitValue(path[2]);
        if (high < 0 || low < 0 || high + low == 0) {
            return "";
        }
        decoded += static_cast<char>(high * 16 + low);
        path.remove_prefix(2);
    }
    return decoded;
}

// The local path that "reference" means in the document "base"; empty for any other URL.
static std::string LocalPath(const std::string& reference, const std::string& base) {
    for (const std::string_view form : {"file:///", "file://localhost/", "file:/"}) {
        const size_t slash = form.size() - 1;
        if (EqualsIgnoringCase(reference.substr(0, form.size()), form) &&
            reference[slash + 1] != '/') {
            return Decoded(std::string_view(reference).substr(slash));
        }
    }
    if (reference.find("://") != std::string::npos) {
        return "";
    }
    const size_t folder = base.rfind('/');
    if (reference.substr(0, 1) == "/" || folder == std::string::npos) {
        return reference;
    }
    return base.substr(0, folder + 1) + reference;
}

// Whether what the file says may come into the map at "path": it is a regular file that everybody
// may read, or the group of the map's file. One that only the runner may read stays his.
static bool MayBeQuoted(int fd, const std::string& path) {
    struct stat status {};
    struct stat map {};
    if (calls::Fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    const OpenedFile of_map = OpenProductFile(path, O_PATH);
    const bool is_for_group = (status.st_mode & S_IRGRP) != 0 && of_map.fd.IsOpen() &&
                              calls::Fstat(of_map.fd.get(), &map) == 0 &&
                              map.st_gid == status.st_gid;
    return (status.st_mode & S_IROTH) != 0 || is_for_group;
}

xercesc::InputSource* MyEntityHandler::resolveEntity(xercesc::XMLResourceIdentifier* identifier) {
    if (identifier->getSystemId() == nullptr) {
        return nullptr;
    }
    const std::string reference = ToUtf8(identifier->getSystemId());
    // The one such entity of the document is the rest of its document type. A schema may have a
    // document type of its own, of whose entities the handlers are not told.
    using Identifier = xercesc::XMLResourceIdentifier;
    if (identifier->getResourceIdentifierType() == Identifier::ExternalEntity &&
        !reading_.in_document_type) {
        RefuseReference(reading_, identifier->getSystemId());
    }
    const XMLCh* base_id = identifier->getBaseURI();
    const bool in_document =
        base_id == nullptr || *base_id == 0 || base_id == ToUtf16(reading_.path);
    const std::string path = LocalPath(reference, in_document ? reading_.path : ToUtf8(base_id));
    if (reading_.rules == DocumentRules::kForeign || reference.empty() || path.empty()) {
        RefuseReference(reading_, identifier->getSystemId());
    }
    OpenedFile file = OpenProductFile(path, O_RDONLY | O_NONBLOCK);
    if (!file.fd.IsOpen() && errno == ENOENT) {
        Refuse(reading_, "'" + reference + "' is missing");
    }
    if (!MayBeQuoted(file.fd.get(), reading_.path)) {
        RefuseReference(reading_, identifier->getSystemId());
    }
    if (identifier->getResourceIdentifierType() != Identifier::ExternalEntity) {
        MakeSchemaTables();
    }
    return new FileSource(path, std::move(file.fd));
}
