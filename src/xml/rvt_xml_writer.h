// Writing the tree back. The layout is fixed by the tree alone: four blanks for each level, an
// element or a comment on a line, attributes on the element's line and wrapped so that they end by
// column 77, a continuation line beginning three blanks deeper than its element:
//
//     <Platform ID="7">
//         <PropertyMap ID="7.pmap">
//             <Property name="Logging Enabled" readonly="false" type="boolean"
//                 value="true"/>
//         </PropertyMap>
//     </Platform>
//
// An element without children ends in "/>"; one whose children are all deleted keeps both tags.
// Attribute values are cut when their escaped form has reached 8185 bytes; names and comments are
// written as they are. In a document of XML 1.1, whose values may hold control characters by
// reference alone, those are written as such references (&#1;).
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include "base/outcome.h"
#include "base/output.h"
#include "xml/rvt_node.h"
#include "xml/walk.h"

// Replaces the map file "path" by the tree: a new file beside it, its name followed by ".tmp", is
// written, synced and moved over it. The file has the encoding that the tree's XML declaration
// names, the product's group and mode 0660. "before_change" has the last word before the move; when
// it fails, so does this, and the new file is gone. Any other failure leaves the old map, and the
// new file where it is: kCannotOpen "Cannot open \"%s\"." and kWriteFailed "Cannot write to
// \"%s\"." name the temporary file, kWriteFailed may also carry the system's text alone;
// kRenameFailed "Rename failed for \"%s\"." names the map.
Outcome WriteXMLFile(const std::string& path, const RVT_XML_Tree& tree,
                     const std::function<Outcome()>& before_change);

// The encoding that a tree's XML declaration names; empty for none.
std::string EncodingOf(const RVT_XML_Tree& tree);

// Whether a tree's XML declaration names version 1.1.
bool IsXml11(const RVT_XML_Tree& tree);

// Whether a tree can be written in its encoding. Fails as PrintTree.
Result<bool> FitsItsEncoding(const RVT_XML_Tree& tree);

// Prints the whole tree. Whether it arrived, the output tells. Fails as XmlPrinter.
Outcome PrintTree(Output& out, const RVT_XML_Tree& tree);

// An attribute's value as it is when it has been written and read again: a tab or a line break is a
// blank, and what the cut takes is missing.
std::string ValueAsRead(std::string_view value);
// Whether that is the value itself.
bool IsReadAsWritten(std::string_view value);

// Prints parts of a document, the first line "depth" blanks from the left.
class XmlPrinter {
  public:
    // Prints to "out", for a document of XML 1.1 or 1.0.
    XmlPrinter(Output& out, bool is_xml_11) : out_(out), is_xml_11_(is_xml_11) {}

    // One node with all below it; several nodes.
    void PrintNodes(const RVT_Node& node, size_t depth);
    void PrintAll(const NodeWalk& nodes, size_t depth);
    // The attributes of a node that stands at "depth"; "column" is the number of bytes already on
    // the line.
    void PrintAttributes(const RVT_Node& node, size_t depth, size_t column);

    // kLookupFailed without a message when a list of attributes held another node, of which
    // standard error tells.
    const Outcome& outcome() const { return outcome_; }

    // "text" with the five characters that XML reserves replaced by their entities, cut when it has
    // reached kLongestValue bytes, but not within a character. Valid until the next call.
    std::string_view DoEntityReferenceReplacement(const char* text);

    // The length that the escaped form of a value has reached when it is cut, and the most that
    // one character of it takes.
    static constexpr size_t kLongestValue = 8185;
    static constexpr size_t kLongestEntity = 6;

  private:
    void PrintElement(const RVT_Node& node, size_t depth);
    void PrintComment(const RVT_Node& node, size_t depth);
    void PrintDeclaration(const RVT_Node& node, size_t depth);

    Output& out_;
    bool is_xml_11_;
    Outcome outcome_;
    std::array<char, kLongestValue + kLongestEntity> escaped_;
};
