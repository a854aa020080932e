#include "inventory/keys.h"

#include <algorithm>

#include "model/lookups.h"
#include "model/vocabulary.h"

std::vector<Key> Keys() {
    std::vector<Key> keys = {{"kind", Key::Of::kKind}};
    for (const Property property : ListedProperties()) {
        keys.push_back({RowOf(property).key, Key::Of::kProperty, property});
        if (property == Property::kName) {
            keys.push_back({"id", Key::Of::kId});
            keys.push_back({"platform", Key::Of::kPlatform});
        }
    }
    keys.push_back({"cache", Key::Of::kCache});
    return keys;
}

std::optional<Key> FindKey(std::string_view word) {
    const std::vector<Key> keys = Keys();
    const auto key = std::ranges::find(keys, word, &Key::word);
    return key == keys.end() ? std::nullopt : std::optional(*key);
}

bool IsSwitch(const Key& key) {
    return key.of == Key::Of::kCache ||
           (key.of == Key::Of::kProperty && RowOf(key.property).kind == ValueKind::kSwitch);
}

std::optional<std::string_view> ValueOf(const Element& element, const Key& key) {
    std::string_view value = element.values[key.property];
    if (key.of == Key::Of::kKind) {
        value = KindOf(element.owner);
    } else if (key.of == Key::Of::kId) {
        value = element.id;
    } else if (key.of == Key::Of::kPlatform) {
        value = element.IsInPlatform() ? element.parent->Name() : std::string_view();
    } else if (key.of == Key::Of::kCache && element.owner == Owner::kPlatform) {
        const bool has_cache = element.node != nullptr && FindCache(*element.node) != nullptr;
        value = has_cache ? switch_on : switch_off;
    } else if (key.of == Key::Of::kCache) {
        value = {};
    } else if (key.property == Property::kAddress) {
        value = element.Address();
    }
    return value.data() == nullptr ? std::nullopt : std::optional(value);
}

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
