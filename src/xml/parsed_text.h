// The parser's UTF-16 text as the tree keeps it. Names and short values recur by the hundred
// thousand, so both are looked up among those seen before and kept once.
#pragma once

#include "xml/names.h"

// The id of a name; "name" ends with a zero.
NameId ParsedName(const char16_t* name);

// UTF-8 text that lives for the whole run and may be shared with other equal values.
const char* ParsedValue(const char16_t* value);

// Whether all values so far are the same when they have been written and read again.
bool AreParsedValuesAsWritten();
