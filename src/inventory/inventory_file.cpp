#include "inventory/inventory_file.h"

#include <algorithm>

#include "base/arena.h"
#include "base/quoted.h"
#include "base/text.h"
#include "inventory/csv.h"
#include "inventory/inventory_reader.h"
#include "model/validation.h"

static constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
static constexpr std::string_view kBlanks = " \t\r\n";

// The first character of "text"; nothing when all is blank.
static std::string_view FirstCharacter(std::string_view text) {
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size())).substr(0, 1);
}

bool IsMap(std::string_view beginning) {
    // UTF-16 and UTF-32 have zero bytes in such characters, and a byte-order mark or none.
    static constexpr size_t kMost = 4096;
    const std::string_view head = beginning.substr(0, 2);
    const bool is_wide = head.find_first_of(std::string_view("\0\xFE\xFF", 3)) != head.npos;
    std::string narrow(is_wide ? beginning.substr(0, kMost) : "");
    std::erase_if(narrow, [](char c) { return c == '\0' || c == '\xFE' || c == '\xFF'; });
    const std::string_view first = FirstCharacter(is_wide ? narrow : beginning);
    static constexpr std::string_view kDeclarationInEbcdic = "\x4C\x6F\xA7\x94";
    return first.empty() || first == "<" || beginning.starts_with(kDeclarationInEbcdic);
}

Outcome WrongAt(std::string place, const std::string& text, ExitCode code) {
    return Outcome(code, text).WithCause({std::move(place), text});
}

std::string PositionIn(const InventoryFile& file, const Row& row) {
    const std::string number = std::to_string(row.number);
    const std::string_view name = row.values[Property::kName];
    const bool is_named = !name.empty() && IsValidName(name);
    return file.is_csv ? number : is_named ? std::string(name) : "item " + number;
}

std::string PositionOf(const InventoryFile& file, const Row& row) {
    return file.name + ':' + PositionIn(file, row);
}

std::unordered_map<std::string, const Row*> RowsBySubject(const InventoryFile& file) {
    std::unordered_map<std::string, const Row*> rows;
    for (const Row& row : file.rows) {
        rows.emplace(Label(*row.owner, row.values[Property::kName]), &row);
    }
    return rows;
}

size_t LineAt(std::string_view text, size_t offset) {
    return 1 + static_cast<size_t>(std::ranges::count(text.substr(0, offset), '\n'));
}

Outcome UnknownKeyAt(std::string place, std::string_view word) {
    static constexpr size_t kMost = 60;
    std::string text = UnknownKey(std::string(word.substr(0, kMost))).message();
    std::ranges::replace_if(
        text, [](char c) { return c >= 0 && c < ' '; }, '?');
    return WrongAt(std::move(place), text);
}

Outcome Take(const InventoryFile& file, Row& row, const Key& key, std::string_view value) {
    if (key.of == Key::Of::kProperty) {
        row.values[key.property] = value;
    } else if (key.of == Key::Of::kPlatform) {
        row.platform = value;
    } else if (key.of == Key::Of::kKind) {
        if (value != KindOf(Owner::kPlatform) && value != KindOf(Owner::kConsole)) {
            return WrongAt(PositionOf(file, row), "The kind is " + Shortened(value) +
                                                      ", neither \"platform\" nor \"console\".");
        }
        row.owner = value == KindOf(Owner::kPlatform) ? Owner::kPlatform : Owner::kConsole;
    }
    return {};
}

// The keys that the first row of CSV names.
static Outcome ReadHead(const CsvReader& reader, const InventoryFile& file,
                        std::vector<Key>& keys) {
    const std::string place = file.name + ':' + std::to_string(reader.line());
    for (const std::string_view word : reader.fields()) {
        const std::optional<Key> key = FindKey(word);
        if (!key) {
            return UnknownKeyAt(place, word);
        }
        if (std::ranges::find(keys, word, &Key::word) != keys.end()) {
            return WrongAt(place, "The key " + Quoted(word) + " stands there twice.");
        }
        keys.push_back(*key);
    }
    const bool has_name = std::ranges::find(keys, "name", &Key::word) != keys.end();
    return has_name ? Outcome() : WrongAt(place, "The key \"name\" is missing.");
}

static Outcome ReadRow(const CsvReader& reader, const std::vector<Key>& keys, InventoryFile& file) {
    Row& row = file.rows.emplace_back(Row{.number = reader.line()});
    const std::vector<std::string_view>& fields = reader.fields();
    if (fields.size() != keys.size()) {
        return WrongAt(PositionOf(file, row), "The row has " + std::to_string(fields.size()) +
                                                  " fields instead of " +
                                                  std::to_string(keys.size()) + ".");
    }
    for (size_t i = 0; i < keys.size(); ++i) {
        if (Outcome outcome = Take(file, row, keys[i], fields[i]); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

// CSV can hold a character in no other way than as it is.
static Outcome CheckCharacters(std::string_view text, const std::string& name) {
    for (size_t number = 1; !text.empty(); ++number) {
        std::string_view line = TakeLine(text);
        if (IsXmlText(line)) {
            continue;
        }
        bool is_utf8 = true;
        while (!line.empty()) {
            is_utf8 = TakeCharacter(line) >= 0 && is_utf8;
        }
        const std::string place = name + ':' + std::to_string(number);
        return is_utf8 ? WrongAt(place, "A control character stands there that no map can hold.")
                       : WrongAt(place, "That is no text in UTF-8.", ExitCode::kNotWellFormed);
    }
    return {};
}

Outcome ReadCsv(std::string_view text, InventoryFile& file) {
    if (Outcome outcome = CheckCharacters(text, file.name); !outcome.ok()) {
        return outcome;
    }
    file.rows.reserve(LineAt(text, text.size()));
    CsvReader reader(text);
    std::vector<Key> keys;
    for (;;) {
        const Result<bool> next = reader.Next();
        if (!next.ok()) {
            return WrongAt(file.name + ':' + std::to_string(reader.line()),
                           next.outcome().message(), next.outcome().code());
        }
        Outcome outcome = !*next         ? Outcome()
                          : keys.empty() ? ReadHead(reader, file, keys)
                                         : ReadRow(reader, keys, file);
        if (!*next || !outcome.ok()) {
            return outcome;
        }
    }
}

Result<InventoryFile> ReadInventoryFile(std::string_view text, const std::string& name) {
    InventoryFile file = {name, FirstCharacter(text) != "{", {}, std::nullopt};
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    Outcome outcome =
        file.is_csv ? ReadCsv({arena::Copy(text), text.size()}, file) : ReadJson(text, file);
    return outcome.ok() ? Result(std::move(file)) : outcome;
}
