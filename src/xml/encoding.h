// Text for a document that declares another encoding than UTF-8.
#pragma once

#include <string>
#include <string_view>

// Whether the encoding "name" of an XML declaration (empty for none) is UTF-8.
bool IsUtf8(std::string_view name);

// Puts "document", UTF-8 text as the writer makes it, into "converted" in the encoding "name". A
// character that the encoding lacks, or does not keep, becomes a decimal character reference in an
// attribute value (&#8364;). False where none can stand (a comment, a name), and for an encoding
// that the system does not know.
bool ConvertDocument(std::string_view document, const std::string& name, std::string& converted);

// Whether any document can be written in the encoding "name", by the name that the library or the
// system has for it.
bool CanWriteIn(const std::string& name);
