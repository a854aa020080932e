#include "report/list.h"

#include <fnmatch.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <span>

#include "base/quoted.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "report/table.h"

Result<Filter> ParseFilter(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return Failure(ExitCode::kInvalidArgument, "\"%s\" is not of the form KEY=GLOB.",
                       text.c_str());
    }
    const bool is_negated = equals > 0 && text[equals - 1] == '!';
    const std::string word = text.substr(0, equals - (is_negated ? 1 : 0));
    const std::optional<Key> key = FindKey(word);
    return key ? Result(Filter{*key, text.substr(equals + 1), is_negated}) : UnknownKey(word);
}

static std::string_view TextOf(const Element& element, const Key& key) {
    return ValueOf(element, key).value_or("");
}

static bool Passes(const Element& element, const Listing& listing) {
    return (!listing.kind || *listing.kind == element.owner) &&
           std::ranges::all_of(listing.filters, [&element](const Filter& filter) {
               const std::string value(TextOf(element, filter.key));
               return (fnmatch(filter.glob.c_str(), value.c_str(), 0) == 0) != filter.is_negated;
           });
}

// RFC 4180: quotes around what holds one, a comma or a line break, and doubled within.
static void PutCsv(std::string_view value, Output& out) {
    if (value.find_first_of("\",\r\n") == std::string_view::npos) {
        out.Put(value);
        return;
    }
    out.Put("\"");
    for (size_t quote; (quote = value.find('"')) != std::string_view::npos;) {
        out.Put(value.substr(0, quote + 1));
        out.Put("\"");
        value.remove_prefix(quote + 1);
    }
    out.Put(value);
    out.Put("\"");
}

static void PutCsvLines(const Elements& elements, std::span<const Key> fields, Output& out) {
    const auto put_line = [&](auto value_of) {
        for (const Key& key : fields) {
            out.Put(&key == &fields.front() ? "" : ",");
            PutCsv(value_of(key), out);
        }
        out.Put("\r\n");
    };
    put_line([](const Key& key) { return key.word; });
    for (const Element* element : elements) {
        put_line([element](const Key& key) { return TextOf(*element, key); });
    }
}

static void PutJson(std::string_view value, bool is_switch, Output& out) {
    const bool is_boolean = is_switch && (value == switch_on || value == switch_off);
    out.Put(is_boolean ? value : WithEscapes(nlohmann::json(value).dump()));
}

// {"version": "3.0", "serial": "12", "security": false, "items": [ and an item a line.
static void PutJsonDocument(const RVT_Node& map, const Elements& elements,
                            std::span<const Key> fields, Output& out) {
    out.Put("{");
    for (const std::string_view name : {version_tag, serial_tag, security_tag}) {
        if (const RVT_Node* attribute = FindAttribute(map, name); attribute != nullptr) {
            out.Put("\"");
            out.Put(name);
            out.Put("\": ");
            PutJson(attribute->GetValue(), name == security_tag, out);
            out.Put(", ");
        }
    }
    out.Put("\"items\": [");
    std::string_view separator = "\n";
    for (const Element* element : elements) {
        out.Put(std::exchange(separator, ",\n"));
        std::string_view before = "{";
        for (const Key& key : fields) {
            if (const auto value = ValueOf(*element, key)) {
                out.Put(std::exchange(before, ", "));
                out.Put("\"");
                out.Put(key.word);
                out.Put("\": ");
                PutJson(*value, IsSwitch(key), out);
            }
        }
        out.Put(before == "{" ? "{}" : "}");
    }
    out.Put(elements.empty() ? "]}\n" : "\n]}\n");
}

// Leaves out a name that would be two lines.
static void PutNames(const Elements& elements, Output& out, std::vector<std::string>& complaints) {
    for (const Element* element : elements) {
        const std::string_view name = element->Name();
        if (name.find_first_of("\n\r") != std::string_view::npos) {
            complaints.push_back(Shortened(name) + " is left out, since it is no single line.");
        } else if (element->values.Has(Property::kName)) {
            out.Put(name);
            out.Put("\n");
        }
    }
}

// The keys of the columns that tell most; one shows the model of a platform and the type of a
// console.
static std::vector<std::vector<Key>> ColumnsThatTellMost() {
    std::vector<std::vector<Key>> columns;
    for (const char* word :
         {"kind", "name", "addr", "port", "platform", "model", "type", "comment"}) {
        const Key key = *FindKey(word);
        if (key.word == "type") {
            columns.back().push_back(key);
        } else {
            columns.push_back({key});
        }
    }
    return columns;
}

static void PutTable(const Elements& elements, const Listing& listing, Output& out) {
    std::vector<std::vector<Key>> columns;
    for (const Key& key : listing.fields) {
        columns.push_back({key});
    }
    if (columns.empty()) {
        columns = ColumnsThatTellMost();
    }
    Table table;
    for (const auto& keys : columns) {
        const std::string title(keys.front().word);
        table.AddColumn(keys.size() == 1 ? title : title + "/" + std::string(keys.back().word));
    }
    for (const Element* element : elements) {
        for (const auto& keys : columns) {
            const auto first = ValueOf(*element, keys.front());
            table.AddCell(first ? *first : TextOf(*element, keys.back()));
        }
    }
    table.Put(listing.columns, out);
}

static void PutItems(const RVT_Node& map, const Elements& elements, const Listing& listing,
                     Output& out, std::vector<std::string>& complaints) {
    const std::vector<Key> fields = listing.fields.empty() ? Keys() : listing.fields;
    switch (listing.format) {
        case Listing::Format::kTable:
            return PutTable(elements, listing, out);
        case Listing::Format::kCsv:
            return PutCsvLines(elements, fields, out);
        case Listing::Format::kJson:
            return PutJsonDocument(map, elements, fields, out);
        case Listing::Format::kNames:
            return PutNames(elements, out, complaints);
    }
}

std::vector<std::string> List(const Outline& outline, const Listing& listing, Output& out) {
    Elements elements = outline.elements;
    std::set<std::string_view> missing(listing.names.begin(), listing.names.end());
    const std::set<std::string_view> wanted = missing;
    std::erase_if(elements, [&](const Element* element) {
        missing.erase(element->Name());
        return !(wanted.empty() || wanted.contains(element->Name())) || !Passes(*element, listing);
    });
    if (listing.sort) {
        std::ranges::stable_sort(elements, {}, [&listing](const Element* element) {
            return TextOf(*element, *listing.sort);
        });
    }
    std::vector<std::string> complaints;
    PutItems(*outline.map, elements, listing, out, complaints);
    for (const std::string& name : listing.names) {
        if (missing.erase(name) > 0) {
            complaints.push_back('"' + name + "\" not found.");
        }
    }
    return complaints;
}
