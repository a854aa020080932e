// Text for a document that declares another encoding than UTF-8.
#pragma once

#include <string>
#include <string_view>

// Whether the encoding "name" of an XML declaration (empty for none) is UTF-8.
bool IsUtf8(std::string_view name);

// Appends "document", UTF-8 text as the writer makes it, to "converted" in the encoding "name". A
// character that the encoding lacks becomes a decimal character reference in an attribute value
// (&#8364;). False where none can stand (a comment, a name) and for an encoding that the system
// does not know.
bool ConvertDocument(std::string_view document, const std::string& name, std::string& converted);

// The document with references for all characters of attribute values that encodings disagree on:
// those beyond ASCII, the backslash and the tilde.
std::string WithReferences(std::string_view document);
