// What a person can ask of a platform or console: values by key.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/outcome.h"
#include "model/element.h"

struct Key {
    // What is not a property's value.
    enum class Of { kKind, kId, kPlatform, kCache, kProperty };

    std::string_view word;
    Of of;
    Property property = Property::kName;  // for kProperty
};

// All keys, in the order in which they are listed.
std::vector<Key> Keys();
// Nothing for an unknown word.
std::optional<Key> FindKey(std::string_view word);

// Whether its values are switches, or the cache.
bool IsSwitch(const Key& key);

// Nothing for what the element lacks. A switch is a text here, as is the cache; the address of a
// console inside another element is that of its parent.
std::optional<std::string_view> ValueOf(const Element& element, const Key& key);

// kInvalidArgument for a word that is not known, with the nearest known word; "what" says what the
// word should have been.
Outcome UnknownWord(const char* what, const std::string& word,
                    const std::vector<std::string>& known);
// The same for a key.
Outcome UnknownKey(const std::string& word);
