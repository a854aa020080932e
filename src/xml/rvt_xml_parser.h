// Reading a document into the tree.
//
// Kept are elements, attributes (local names, expanded values), comments and the XML declaration.
// Text between tags, processing instructions and the document type are dropped. All text in the
// tree is UTF-8, whatever the document's encoding and the locale.
#pragma once

#include <string_view>

#include "xml/rvt_node.h"

// What a document may refer to, and what it may hold.
enum class DocumentRules {
    // The map: may name a DTD or schema that is a regular local file, by its path or a file: URL;
    // no entity, not even in those, may be a file. An element with two attributes of equal local
    // names is refused, since the map could not be written back.
    kMap,
    // A document from outside: may refer to no other file at all. What its values grow to, the
    // memory that the parser may take, and the size of its declarations are bounded.
    kForeign,
};

// Parses the file "path", taken by its bytes, into "tree". Returns 0, or what the parser reports
// without ending the run, with its text on standard error: 1 when the library cannot be
// initialised, 4 when it gave up otherwise; the tree then holds what was read so far. Any error in
// the document, and a file that cannot be read, ends the run with kNotWellFormed and
//     Error at file map.xml, line 3, char 7.
//        expected end of tag 'Platform'
// (with a small "e" for errors of validation); more than RVT_Node_Stack::kDepth open elements end
// it with kNodeStack. Expansion of entities is bounded. Memory that runs out in the library is an
// error at line 0, char 0, "out of memory".
int ParseXMLFile(const char* path, RVT_XML_Tree* tree, DocumentRules rules = DocumentRules::kMap);

// The same for a foreign document in memory; "name" stands for its path in messages.
int ParseXMLText(std::string_view text, const char* name, RVT_XML_Tree* tree);

// Reads a foreign document in memory and keeps nothing of it.
int CheckXMLText(std::string_view text, const char* name);
