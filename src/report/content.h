// What an inventory says: what two of them are compared by. Identifiers, the order of elements and
// properties, and the own address of a console inside a platform are no part of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/inventory.h"
#include "model/properties.h"

// No index of an element.
inline constexpr size_t kNone = SIZE_MAX;

// A platform, a console inside one, or a standalone console.
struct Element {
    Owner owner;
    RVT_Node* element = nullptr;  // null for one that a file asks for: it has these values alone,
    const PropertyValues* values = nullptr;  // which are kept to the end of the run
    size_t platform;  // the index of the item that a console is inside of; else kNone
    std::string_view name;
    std::string_view id;  // both are empty where there is none
};
using Elements = std::vector<Element>;

// An inventory as it is compared. It stays valid as long as the map does.
struct Outline {
    RVT_Node* map = nullptr;  // the root, or null
    Elements elements;        // in the order of the map, a console behind its platform
};
Outline OutlineOf(const Inventory& inventory);

// That of a platform's or console's node.
Element ElementOf(RVT_Node& element, size_t platform);

// The value of a property; null where there is none.
std::string_view ValueOf(const Element& item, Property property);

// "platform" or "console", and the same with the element's quoted name: platform "lab1".
std::string_view KindOf(Owner owner);
std::string Label(Owner owner, std::string_view name);
std::string Label(const Element& item);

// An element, attribute or property that no command makes: what it is, and what it holds.
struct Oddity {
    std::string what;
    std::string text;
    auto operator<=>(const Oddity&) const = default;  // NOLINT(modernize-use-nullptr)
};

struct Content {
    PropertyValues values;  // but the address of a console inside a platform
    const RVT_Node* cache = nullptr;
    std::vector<Oddity> oddities;  // in a fixed order
};
Content ContentOf(const Element& item);

// The same of the root, which may be null: the security switch, where there is one.
struct MapContent {
    std::optional<std::string_view> security;
    std::vector<Oddity> oddities;
};
MapContent ContentOf(const RVT_Node* map);

// Whether two elements of one kind are plainly the same, the consoles inside them left out: true
// only if their contents are, and nearly always then. Much cheaper than a comparison of contents.
bool AreAlike(const Element& one, const Element& other);

// Whether nodes have the same names, attributes in order, comments and nodes below them.
bool IsSameTree(const RVT_Node& one, const RVT_Node& other);

bool HaveSameCache(const Content& one, const Content& other);

// A node with all below it, as it stands in a map.
std::string XmlText(const RVT_Node& node);

// "text" in double quotes on one line: a quote and a backslash have a backslash before them,
// control characters and line separators are \t, \n, \r or \u001b.
std::string Quoted(std::string_view text);
// "json" with \u escapes for the control characters beyond ASCII, which JSON leaves as they are.
std::string WithEscapes(std::string_view json);
// The same of its beginning, for a message.
std::string Shortened(std::string_view text);
