#include "report/list.h"

#include <fnmatch.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <span>

#include "model/lookups.h"
#include "model/vocabulary.h"
#include "report/content.h"
#include "report/table.h"

// How many letters must be changed, added or left out to make one word of the other.
static size_t Distance(std::string_view one, std::string_view other) {
    std::vector<size_t> row(other.size() + 1);
    for (size_t i = 0; i < row.size(); ++i) {
        row[i] = i;
    }
    for (size_t i = 0; i < one.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t k = 0; k < other.size(); ++k) {
            const size_t replaced = diagonal + (one[i] == other[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({replaced, row[k] + 1, row[k + 1] + 1});
        }
    }
    return row.back();
}

Outcome UnknownWord(const char* what, const std::string& word,
                    const std::vector<std::string>& known) {
    static constexpr size_t kLongest = 64;
    const auto nearest = std::ranges::min_element(known, {}, [&word](const std::string& one) {
        return Distance(word.substr(0, kLongest), one);
    });
    const bool is_near = nearest != known.end() && word.size() <= kLongest &&
                         Distance(word, *nearest) <= 1 + word.size() / 3;
    return Failure(ExitCode::kInvalidArgument, "Unknown %s \"%s\".%s%s%s", what, word.c_str(),
                   is_near ? " Did you mean \"" : "", is_near ? nearest->c_str() : "",
                   is_near ? "\"?" : "");
}

Outcome UnknownKey(const std::string& word) {
    std::vector<std::string> known;
    for (const Key& key : Keys()) {
        known.emplace_back(key.word);
    }
    return UnknownWord("key", word, known);
}

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

static std::string_view TextOf(const Item& item, const Key& key) {
    return ValueOf(item, key).value_or("");
}

static bool Passes(const Item& item, const Listing& listing) {
    return (!listing.kind || *listing.kind == item.owner) &&
           std::ranges::all_of(listing.filters, [&item](const Filter& filter) {
               const std::string value(TextOf(item, filter.key));
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

static void PutCsvLines(const std::vector<Item>& items, std::span<const Key> fields, Output& out) {
    const auto put_line = [&](auto value_of) {
        for (const Key& key : fields) {
            out.Put(&key == &fields.front() ? "" : ",");
            PutCsv(value_of(key), out);
        }
        out.Put("\r\n");
    };
    put_line([](const Key& key) { return key.word; });
    for (const Item& item : items) {
        put_line([&item](const Key& key) { return TextOf(item, key); });
    }
}

static void PutJson(std::string_view value, bool is_switch, Output& out) {
    const bool is_boolean = is_switch && (value == switch_on || value == switch_off);
    out.Put(is_boolean ? value : WithEscapes(nlohmann::json(value).dump()));
}

// {"version": "3.0", "serial": "12", "security": false, "items": [ and an item a line.
static void PutJsonDocument(const RVT_Node& map, const std::vector<Item>& items,
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
    for (const Item& item : items) {
        out.Put(&item == &items.front() ? "\n" : ",\n");
        std::string_view before = "{";
        for (const Key& key : fields) {
            if (const auto value = ValueOf(item, key)) {
                out.Put(std::exchange(before, ", "));
                out.Put("\"");
                out.Put(key.word);
                out.Put("\": ");
                PutJson(*value, IsSwitch(key), out);
            }
        }
        out.Put(before == "{" ? "{}" : "}");
    }
    out.Put(items.empty() ? "]}\n" : "\n]}\n");
}

// Leaves out a name that would be two lines.
static void PutNames(const std::vector<Item>& items, Output& out,
                     std::vector<std::string>& complaints) {
    for (const Item& item : items) {
        const std::string_view name = item.values[Property::kName];
        if (name.find_first_of("\n\r") != std::string_view::npos) {
            complaints.push_back(Shortened(name) + " is left out, since it is no single line.");
        } else if (item.values.Has(Property::kName)) {
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

static void PutTable(const std::vector<Item>& items, const Listing& listing, Output& out) {
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
    for (const Item& item : items) {
        for (const auto& keys : columns) {
            const auto first = ValueOf(item, keys.front());
            table.AddCell(first ? *first : TextOf(item, keys.back()));
        }
    }
    table.Put(listing.columns, out);
}

static void PutItems(const RVT_Node& map, const std::vector<Item>& items, const Listing& listing,
                     Output& out, std::vector<std::string>& complaints) {
    const std::vector<Key> fields = listing.fields.empty() ? Keys() : listing.fields;
    switch (listing.format) {
        case Listing::Format::kTable:
            return PutTable(items, listing, out);
        case Listing::Format::kCsv:
            return PutCsvLines(items, fields, out);
        case Listing::Format::kJson:
            return PutJsonDocument(map, items, fields, out);
        case Listing::Format::kNames:
            return PutNames(items, out, complaints);
    }
}

Result<std::vector<std::string>> List(const Inventory& inventory, const Listing& listing,
                                      Output& out) {
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    std::vector<Item> items = ItemsOf(**map);
    std::set<std::string_view> missing(listing.names.begin(), listing.names.end());
    const std::set<std::string_view> wanted = missing;
    std::erase_if(items, [&](const Item& item) {
        const std::string_view name = item.values[Property::kName];
        missing.erase(name);
        return !(wanted.empty() || wanted.contains(name)) || !Passes(item, listing);
    });
    if (listing.sort) {
        std::ranges::stable_sort(
            items, {}, [&listing](const Item& item) { return TextOf(item, *listing.sort); });
    }
    std::vector<std::string> complaints;
    PutItems(**map, items, listing, out, complaints);
    for (const std::string& name : listing.names) {
        if (missing.erase(name) > 0) {
            complaints.push_back('"' + name + "\" not found.");
        }
    }
    return complaints;
}
