#include "report/items.h"

#include <algorithm>
#include <array>

#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

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

static Item ItemOf(const RVT_Node& element) {
    const Owner owner = element.IsName(tag::Platform) ? Owner::kPlatform : Owner::kConsole;
    const RVT_Node* id = FindAttribute(element, kIDId);
    return {&element, owner, id == nullptr ? std::string_view() : id->GetValue(), std::nullopt,
            GetPropertyValues(element, owner)};
}

std::vector<Item> ItemsOf(const RVT_Node& map) {
    std::vector<Item> items;
    for (const RVT_Node& element : LiveElements(map, tag::Platform, tag::Console)) {
        const Item around = ItemOf(element);
        items.push_back(around);
        for (const RVT_Node& console : LiveElements(element, tag::Console)) {
            Item& inside = items.emplace_back(ItemOf(console));
            inside.values[Property::kAddress] = around.values[Property::kAddress];
            if (around.owner == Owner::kPlatform) {
                inside.platform = around.values[Property::kName];
            }
        }
    }
    return items;
}

static std::optional<std::string_view> IfThere(std::string_view text) {
    return text.data() == nullptr ? std::nullopt : std::optional(text);
}

std::optional<std::string_view> ValueOf(const Item& item, const Key& key) {
    switch (key.of) {
        case Key::Of::kKind:
            return item.owner == Owner::kPlatform ? "platform" : "console";
        case Key::Of::kId:
            return IfThere(item.id);
        case Key::Of::kPlatform:
            return item.platform ? IfThere(*item.platform) : std::nullopt;
        case Key::Of::kCache:
            if (item.owner == Owner::kConsole) {
                return std::nullopt;
            }
            return FindCache(*item.element) == nullptr ? switch_off : switch_on;
        case Key::Of::kProperty:
            break;
    }
    return IfThere(item.values[key.property]);
}
