// Reading a document into the tree.
//
// Kept are elements, attributes (local names, expanded values), comments and the XML declaration.
// Text between tags, processing instructions and the document type are dropped. All text in the
// tree is UTF-8, whatever the document's encoding and the locale.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/outcome.h"
#include "xml/rvt_node.h"

// What a document may refer to, and what it may hold.
enum class DocumentRules {
    // The map: may name a DTD or schema that is a regular local file, by its path or a file: URL,
    // which everybody may read or the group of the map's file, since it comes into the map;
    // no entity, not even in those, may be a file. An element with two attributes of equal local
    // names is refused, since the map could not be written back.
    kMap,
    // A document from outside: may refer to no other file at all. What its values grow to, the
    // memory that the parser may take, and the size of its declarations are bounded.
    kForeign,
};

// How much of a document is kept. The whole is read and checked in any case.
enum class DocumentPart {
    kWhole,
    kTop,  // what stands in no element: the root with its attributes, but nothing inside it
};

// Parses the map "path", taken by its bytes, into "tree". Whether the parser got to the end: where
// it only says on standard error that it gave up, the tree holds what was read so far. An error in
// the document, and a file that cannot be read, is kNotWellFormed with
//     Error at file map.xml, line 3, char 7.
//        expected end of tag 'Platform'
// (with a small "e" for errors of validation); more than RVT_Node_Stack::kDepth open elements are
// kNodeStack without a message, its text stands on standard error. Expansion of entities is
// bounded, and so is the memory that the library takes for a foreign document. Memory that ends is
// kNotWellFormed as well.
Result<bool> ParseXMLFile(const std::string& path, RVT_XML_Tree& tree,
                          DocumentPart part = DocumentPart::kWhole);

// The same for a document in memory; "name" stands for its path in messages.
Result<bool> ParseXMLText(std::string_view text, const std::string& name, RVT_XML_Tree& tree,
                          DocumentRules rules = DocumentRules::kForeign);

// Reads a foreign document in memory and keeps nothing of it. One that the parser gave up is
// kNotWellFormed without a message.
Outcome CheckXMLText(std::string_view text, const std::string& name);

// The line in which each start tag of a map in memory begins, in the order of the document.
Result<std::vector<size_t>> LinesOfStartTags(std::string_view text, const std::string& name);

// Keeps the library ready as long as it exists, for who reads many small documents: starting it
// takes longer than reading one. Where it cannot be started, each reading tells so itself.
class XMLLibrary {
  public:
    XMLLibrary();
    ~XMLLibrary();
    XMLLibrary(const XMLLibrary&) = delete;
    XMLLibrary& operator=(const XMLLibrary&) = delete;

  private:
    struct Start;
    std::unique_ptr<Start> start_;  // null where it failed
};
