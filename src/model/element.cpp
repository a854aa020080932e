#include "model/element.h"

#include <new>

#include "base/arena.h"
#include "base/quoted.h"
#include "model/inventory.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

Element ElementOf(RVT_Node& node, const Element* parent) {
    const Owner owner = node.IsName(tag::Platform) ? Owner::kPlatform : Owner::kConsole;
    const RVT_Node* id = FindAttribute(node, kIDId);
    return {.owner = owner,
            .node = &node,
            .parent = parent,
            .id = id == nullptr ? std::string_view() : id->GetValue(),
            .values = GetPropertyValues(node, owner)};
}

Outcome VisitElements(const RVT_Node& map,
                      const std::function<Outcome(const Element& element)>& visit) {
    for (RVT_Node& node : LiveElements(map, tag::Platform, tag::Console)) {
        const Element top = ElementOf(node, nullptr);
        if (Outcome outcome = visit(top); !outcome.ok()) {
            return outcome;
        }
        for (RVT_Node& console : LiveElements(node, tag::Console)) {
            if (Outcome outcome = visit(ElementOf(console, &top)); !outcome.ok()) {
                return outcome;
            }
        }
    }
    return {};
}

Element& Keep(const Element& element) {
    return *new (arena::Allocate(sizeof element)) Element(element);
}

Outline OutlineOf(const Inventory& inventory) {
    Outline outline = {inventory.FindSystemMap()};
    if (outline.map == nullptr) {
        return outline;
    }
    const Element* top = nullptr;
    static_cast<void>(VisitElements(*outline.map, [&](const Element& element) {
        Element& kept = Keep(element);
        kept.parent = element.parent == nullptr ? nullptr : top;
        kept.index = outline.elements.size();
        top = element.parent == nullptr ? &kept : top;
        outline.elements.push_back(&kept);
        return Outcome();
    }));
    return outline;
}

std::string_view KindOf(Owner owner) {
    return owner == Owner::kPlatform ? "platform" : "console";
}

std::string Label(Owner owner, std::string_view name) {
    return std::string(KindOf(owner)) + ' ' + Quoted(name);
}
