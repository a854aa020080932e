#include "xml/rvt_xml_writer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "base/complaints.h"
#include "base/files.h"
#include "base/text.h"
#include "xml/encoding.h"
#include "xml/rvt_xml_parser.h"

// Blanks for each level of nesting, and how much deeper a continuation line begins.
static constexpr size_t kIndent = 4;
static constexpr size_t kContinuation = 3;
// The last column that an attribute may reach.
static constexpr size_t kLastColumn = 77;

static std::string_view EntityFor(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        default:
            return {};
    }
}

// "text" with the characters that XML 1.1 admits, or keeps, by reference alone as references.
static std::string WithControlReferences(std::string_view text) {
    std::string referenced;
    while (!text.empty()) {
        const std::string_view before = text;
        const int code = TakeCharacter(text);
        const bool is_space = code == '\t' || code == '\n' || code == '\r';
        const bool is_control = (code > 0 && code < 0x20) || (code >= 0x7F && code < 0xA0);
        if ((is_control && !is_space) || code == 0x2028) {
            referenced += "&#" + std::to_string(code) + ";";
        } else {
            referenced += before.substr(0, before.size() - text.size());
        }
    }
    return referenced;
}

std::string_view XmlPrinter::DoEntityReferenceReplacement(const char* text) {
    // Most values are short and plain.
    const size_t plain = strcspn(text, "&<>\"'");
    if (text[plain] == '\0' && plain <= kLongestValue) {
        return {text, plain};
    }
    size_t used = 0;
    for (; *text != '\0' && used < kLongestValue; ++text) {
        const std::string_view entity = EntityFor(*text);
        if (entity.empty()) {
            escaped_[used++] = *text;
        } else {
            used += entity.copy(escaped_.data() + used, entity.size());
        }
    }
    // Cut before a character that does not fit whole, never within it.
    if (IsContinuationByte(*text)) {
        while (IsContinuationByte(escaped_[used - 1])) {
            --used;
        }
        --used;
    }
    return {escaped_.data(), used};
}

// How much of a value is written.
static size_t LengthWritten(std::string_view value) {
    size_t written = 0;
    size_t used = 0;
    for (; written < value.size() && used < XmlPrinter::kLongestValue; ++written) {
        used += std::max<size_t>(EntityFor(value[written]).size(), 1);
    }
    while (written < value.size() && IsContinuationByte(value[written])) {
        --written;
    }
    return written;
}

bool IsReadAsWritten(std::string_view value) {
    const auto is_space = [](char c) { return c == '\t' || c == '\n' || c == '\r'; };
    const bool is_short = value.size() < XmlPrinter::kLongestValue / XmlPrinter::kLongestEntity;
    return std::ranges::none_of(value, is_space) &&
           (is_short || LengthWritten(value) == value.size());
}

std::string ValueAsRead(std::string_view value) {
    std::string read;
    for (const char c : value.substr(0, LengthWritten(value))) {
        const bool ends_line = c == '\n' && !read.empty() && read.back() == '\r';
        read.append(ends_line ? 0 : 1, c);
    }
    for (char& c : read) {
        c = c == '\t' || c == '\n' || c == '\r' ? ' ' : c;
    }
    return read;
}

void XmlPrinter::PrintAttributes(const RVT_Node& node, size_t depth, size_t column) {
    // The blank before a name, "=" and the two quotes.
    static constexpr size_t kAround = 4;
    for (const RVT_Node& attribute : Attributes(node)) {
        const std::string_view name = attribute.GetName();
        if (!attribute.IsType(RVT_ATTRIBUTE)) {
            Complain("PrintAttributes: " + std::string(name) + " not an attribute\n");
            outcome_ = Outcome(ExitCode::kLookupFailed, "");
            return;
        }
        std::string_view value = DoEntityReferenceReplacement(attribute.GetValue());
        std::string referenced;
        if (is_xml_11_) {
            referenced = WithControlReferences(value);
            value = referenced;
        }
        const size_t width = name.size() + value.size() + kAround;
        if (column + width > kLastColumn) {
            out_.Put("\n");
            out_.PutSpaces(depth + kContinuation);
            column = depth + kContinuation;
        }
        out_.Put(" ");
        out_.Put(name);
        out_.Put("=\"");
        out_.Put(value);
        out_.Put("\"");
        column += width;
    }
}

void XmlPrinter::PrintElement(const RVT_Node& node, size_t depth) {
    const std::string_view name = node.GetName();
    out_.PutSpaces(depth);
    out_.Put("<");
    out_.Put(name);
    PrintAttributes(node, depth, depth + 1 + name.size());
    if (!node.HasChildren()) {
        out_.Put("/>\n");
        return;
    }
    out_.Put(">\n");
    PrintAll(Children(node), depth + kIndent);
    out_.PutSpaces(depth);
    out_.Put("</");
    out_.Put(name);
    out_.Put(">\n");
}

void XmlPrinter::PrintComment(const RVT_Node& node, size_t depth) {
    out_.PutSpaces(depth);
    out_.Put("<!--");
    out_.Put(node.GetValue());
    out_.Put("-->\n");
}

void XmlPrinter::PrintDeclaration(const RVT_Node& node, size_t depth) {
    static constexpr std::string_view kStart = "<?xml";
    out_.PutSpaces(depth);
    out_.Put(kStart);
    PrintAttributes(node, depth, depth + kStart.size());
    out_.Put("?>\n");
}

void XmlPrinter::PrintNodes(const RVT_Node& node, size_t depth) {
    if (node.IsType(RVT_ELEMENT)) {
        PrintElement(node, depth);
    } else if (node.IsType(RVT_COMMENT)) {
        PrintComment(node, depth);
    } else if (node.IsType(RVT_XML_DECL)) {
        PrintDeclaration(node, depth);
    }
}

void XmlPrinter::PrintAll(const NodeWalk& nodes, size_t depth) {
    for (const RVT_Node& node : nodes) {
        if (!outcome_.ok() || out_.HasFailed()) {
            break;
        }
        PrintNodes(node, depth);
    }
}

// An attribute of the tree's XML declaration, empty for none.
static std::string Declared(const RVT_XML_Tree& tree, std::string_view name) {
    const RVT_Node* first = Children(tree).First();
    if (first != nullptr && first->IsType(RVT_XML_DECL)) {
        for (const RVT_Node& attribute : Attributes(*first)) {
            if (attribute.IsName(name)) {
                return attribute.GetValue();
            }
        }
    }
    return "";
}

std::string EncodingOf(const RVT_XML_Tree& tree) {
    return Declared(tree, "encoding");
}

bool IsXml11(const RVT_XML_Tree& tree) {
    return Declared(tree, "version") == "1.1";
}

Outcome PrintTree(Output& out, const RVT_XML_Tree& tree) {
    XmlPrinter printer(out, IsXml11(tree));
    printer.PrintAll(Children(tree), 0);
    return printer.outcome();
}

// Whether the parser finds into a document with the declaration of "text" when it is in "encoding":
// what an encoding begins with, and all up to the end of the declaration, it reads by its own
// rules.
static bool IsRecognized(const std::string& text, const std::string& encoding) {
    std::string converted;
    return ConvertDocument(text.substr(0, text.find('>') + 1) + "<a/>", encoding, converted) &&
           CheckXMLText(converted, "new map").ok();
}

// The text of "tree" in another encoding than UTF-8; empty when it cannot be written in that.
static Result<std::string> Encoded(const RVT_XML_Tree& tree, const std::string& encoding) {
    std::string text;
    Output out(text);
    if (Outcome outcome = PrintTree(out, tree); !outcome.ok()) {
        return outcome;
    }
    static_cast<void>(out.Flush());
    std::string converted;
    const bool is_kept = ConvertDocument(text, encoding, converted) && IsRecognized(text, encoding);
    return is_kept ? converted : std::string();
}

Result<bool> FitsItsEncoding(const RVT_XML_Tree& tree) {
    const std::string encoding = EncodingOf(tree);
    if (IsUtf8(encoding)) {
        return true;
    }
    const Result<std::string> text = Encoded(tree, encoding);
    return text.ok() ? Result(!text->empty()) : text.outcome();
}

// Prints the tree in its encoding. Whether it could be written, and in that encoding.
static Result<bool> PrintEncoded(int fd, const RVT_XML_Tree& tree) {
    const std::string encoding = EncodingOf(tree);
    if (IsUtf8(encoding)) {
        Output out(fd);
        const Outcome outcome = PrintTree(out, tree);
        return outcome.ok() ? Result(out.Flush()) : outcome;
    }
    const Result<std::string> text = Encoded(tree, encoding);
    if (!text.ok()) {
        return text.outcome();
    }
    return !text->empty() && WriteAll(fd, *text);
}

Outcome WriteXMLFile(const std::string& path, const RVT_XML_Tree& tree,
                     const std::function<Outcome()>& before_change) {
    const std::string temporary = path + ".tmp";
    const DirectoryEntry entry = EntryOf(path);
    Replacement map(entry, ".tmp");
    if (!map.Create(0660)) {
        return Failure(ExitCode::kCannotOpen, "Cannot open \"%s\".", temporary.c_str());
    }
    if (!map.given().ok()) {
        return map.given();
    }
    const Result<bool> is_printed = PrintEncoded(map.fd(), tree);
    if (!is_printed.ok()) {
        return is_printed.outcome();
    }
    if (!*is_printed || !map.Sync()) {
        return Failure(ExitCode::kWriteFailed, "Cannot write to \"%s\".", temporary.c_str());
    }
    if (Outcome outcome = before_change(); !outcome.ok()) {
        map.Discard();
        return outcome;
    }
    return map.TakeOver()
               ? Outcome()
               : Failure(ExitCode::kRenameFailed, "Rename failed for \"%s\".", path.c_str());
}
