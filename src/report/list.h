// "tqs list": items that are asked for, as a table, as CSV, as JSON, or their names alone.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/outcome.h"
#include "base/output.h"
#include "model/inventory.h"
#include "report/items.h"

// A condition on the value of a key; what is missing counts as the empty text.
struct Filter {
    Key key;
    std::string glob;  // a shell pattern; letter case counts
    bool is_negated;
};

struct Listing {
    enum class Format { kTable, kCsv, kJson, kNames };

    std::vector<std::string> names;  // looked for before the filters; none: all items
    std::optional<Owner> kind;
    std::vector<Filter> filters;
    std::vector<Key> fields;  // none: those of the format
    std::optional<Key> sort;  // none: in the order of the map
    Format format = Format::kTable;
    size_t columns = 0;  // of the terminal that a table must fit; 0 for no limit
};

// The filter "KEY=GLOB" or "KEY!=GLOB". kInvalidArgument when it is none, or the key is unknown.
Result<Filter> ParseFilter(const std::string& text);

// Puts the items. Returns what must be said of names: of those that nothing has, and of those that
// the format cannot hold. kIncompleteMap without a root.
Result<std::vector<std::string>> List(const Inventory& inventory, const Listing& listing,
                                      Output& out);

// kInvalidArgument with the known word that is nearest to one that is not known: "what" says what
// it should have been.
Outcome UnknownWord(const char* what, const std::string& word,
                    const std::vector<std::string>& known);
// The same for a key.
Outcome UnknownKey(const std::string& word);
