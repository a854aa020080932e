// What an inventory says: what two of them are compared by. Identifiers, the order of elements and
// properties, and the own address of a console inside a platform are no part of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/element.h"

// The values of an element but the address of a console inside a platform.
PropertyValues ComparedValues(const Element& element);

// An element, attribute or property that no command makes: what it is, and what it holds.
struct Oddity {
    std::string what;
    std::string text;
    auto operator<=>(const Oddity&) const = default;  // NOLINT(modernize-use-nullptr)
};

// What an element has besides its values and the consoles inside it.
struct Content {
    std::string cache = {};             // as it is in a map; empty for none
    std::vector<Oddity> oddities = {};  // in a fixed order
    bool operator==(const Content&) const = default;
};
Content ContentOf(const Element& element);

// What the root, which may be null, has besides platforms and consoles.
struct MapContent {
    std::optional<std::string_view> security;  // none where the map has no such switch
    std::vector<Oddity> oddities;
};
MapContent ContentOf(const RVT_Node* map);

// Whether two elements of one kind are the same, the consoles inside them left out.
bool AreAlike(const Element& one, const Element& other);
