// "tqs list": items that are asked for, as a table, as CSV, as JSON, or their names alone.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/outcome.h"
#include "base/output.h"
#include "inventory/keys.h"

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

// Puts the elements that are asked for. Returns complaints about names that no element has, and
// about those that the format cannot hold.
std::vector<std::string> List(const Outline& outline, const Listing& listing, Output& out);
