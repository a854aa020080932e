// The platforms and consoles of an inventory, each with all that is known of it: what kfx.conf, a
// list, a check, a comparison and a plan work on.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/outcome.h"
#include "model/properties.h"
#include "xml/rvt_node.h"

class Inventory;

// A platform, a console inside one, or a standalone console. A standalone console may have consoles
// inside it, which count nowhere but are listed and checked.
struct Element {
    Owner owner = Owner::kPlatform;
    RVT_Node* node = nullptr;         // in the map; null for one that a file asks for
    const Element* parent = nullptr;  // the element that a console is inside of; null for others
    std::string_view id = {};         // null where there is none
    PropertyValues values = {};
    size_t index = 0;  // among the elements of its inventory

    [[nodiscard]] std::string_view Name() const { return values[Property::kName]; }
    [[nodiscard]] bool IsInPlatform() const {
        return parent != nullptr && parent->owner == Owner::kPlatform;
    }
    [[nodiscard]] bool IsStandalone() const {
        return parent == nullptr && owner == Owner::kConsole;
    }
    // Where its port is in use: the address of its parent, or its own.
    [[nodiscard]] std::string_view Address() const {
        return (parent != nullptr ? *parent : *this).values[Property::kAddress];
    }
};

// The element of a platform's or console's node.
Element ElementOf(RVT_Node& node, const Element* parent);

// Calls "visit" with each element of "map" in document order, a console behind its parent, until it
// fails. An element is valid during its visit, a parent also during those of its consoles. Returns
// the failure.
Outcome VisitElements(const RVT_Node& map,
                      const std::function<Outcome(const Element& element)>& visit);

// Elements that live until the process ends, in the order of VisitElements.
using Elements = std::vector<const Element*>;

// An inventory that is looked at as a whole. It stays valid as long as the map does.
struct Outline {
    RVT_Node* map = nullptr;  // the root element, or null
    Elements elements = {};
};
Outline OutlineOf(const Inventory& inventory);

// A copy of "element" for the rest of the run.
Element& Keep(const Element& element);

// "platform" or "console", and the same with the element's quoted name: platform "lab1".
std::string_view KindOf(Owner owner);
std::string Label(Owner owner, std::string_view name);
inline std::string Label(const Element& element) {
    return Label(element.owner, element.Name());
}
