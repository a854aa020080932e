#include "model/inventory.h"

#include <string>

#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/uniqueness.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

RVT_Node* Inventory::FindSystemMap() const {
    return ::FindSystemMap(tree_);
}

Result<RVT_Node*> Inventory::NeedSystemMap(ExitCode code) const {
    RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return Outcome(code, "Cannot find SystemMap element.");
    }
    return map;
}

Result<RVT_Node*> Inventory::FindPlatform(std::string_view name) const {
    const Result<RVT_Node*> map = NeedSystemMap(ExitCode::kLookupFailed);
    if (!map.ok()) {
        return map;
    }
    RVT_Node* platform = ::FindPlatform(**map, name);
    if (platform == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find Platform \"%s\".",
                       std::string(name).c_str());
    }
    return platform;
}

Result<Place> Inventory::FindConsole(std::string_view name) const {
    const Result<RVT_Node*> map = NeedSystemMap(ExitCode::kLookupFailed);
    if (!map.ok()) {
        return map.outcome();
    }
    for (RVT_Node& node : LiveElements(**map, tag::Platform, tag::Console)) {
        if (node.IsName(tag::Platform)) {
            if (RVT_Node* console = ::FindConsole(node, name); console != nullptr) {
                return Place{console, &node};
            }
            continue;
        }
        const auto console_name = GetPropertyValue(node, Property::kName);
        if (!console_name) {
            return PropertyMissing(node, Property::kName);
        }
        if (console_name == name) {
            return Place{&node};
        }
    }
    return Failure(ExitCode::kLookupFailed, "Console \"%s\" not found.", std::string(name).c_str());
}

int Inventory::GetCountOfConsolesWithName(std::string_view name) const {
    const RVT_Node* map = FindSystemMap();
    return map == nullptr ? Number(ExitCode::kIncompleteMap)
                          : ::GetCountOfConsolesWithName(*map, name);
}

bool Inventory::IsDuplicateName(std::string_view name) const {
    return GetCountOfConsolesWithName(name) != 0;
}

bool Inventory::IsDuplicateAddress(const RVT_Node* node, std::string_view address) const {
    const RVT_Node* map = FindSystemMap();
    return map != nullptr && ::IsDuplicateAddress(*map, node, address);
}

int Inventory::GetCountOfConsolesWithAddress(std::string_view address,
                                             std::string_view port) const {
    const RVT_Node* map = FindSystemMap();
    return map == nullptr ? 0 : ::GetCountOfConsolesWithAddress(*map, address, port);
}

bool Inventory::IsDuplicatePortWithinAddress(std::string_view address,
                                             std::string_view port) const {
    return GetCountOfConsolesWithAddress(address, port) != 0;
}

RVT_Node& Inventory::Add(RVT_Node& parent, Owner owner, std::string_view id,
                         const PropertyValues& values) {
    const bool is_console = owner == Owner::kConsole;
    RVT_Node& element = AddElement(parent, is_console ? tag::Console : tag::Platform);
    SetAttributes(element, {{ID_tag, id}});
    RVT_Node& property_map = AddElement(element, tag::PropertyMap);
    SetAttributes(property_map, {{ID_tag, PropertyMapID(id)}});
    for (const Property property : PropertiesOf(owner)) {
        if (values.Has(property)) {
            AddProperty(property_map, property, values[property],
                        is_console && RowOf(property).is_boolean_in_consoles);
        }
    }
    return element;
}
