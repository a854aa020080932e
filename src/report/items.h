// The platforms and consoles of an inventory as a person asks for them: items with values by key.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "model/properties.h"
#include "xml/rvt_node.h"

// One platform or console, in the map's own values.
struct Item {
    const RVT_Node* element;
    Owner owner;
    std::string_view id;
    std::optional<std::string_view>
        platform;  // the name of the platform that a console is inside of
    // Of a console inside another element the address of that one.
    PropertyValues values;
};

// What can be asked of an item.
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

// In the order of the map; consoles follow the element that they are inside of.
std::vector<Item> ItemsOf(const RVT_Node& map);

// Nothing for what the item lacks. A switch is a text here, as is the cache.
std::optional<std::string_view> ValueOf(const Item& item, const Key& key);
