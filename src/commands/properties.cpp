#include "commands/properties.h"

#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

static void AddProperty(RVT_Node& property_map, const NewProperty& wanted) {
    RVT_Node& property = AddElement(property_map, Property);
    SetAttributes(property, {{name_tag, wanted.name}, {readonly_tag, switch_off}});
    if (!wanted.type.empty()) {
        SetAttributes(property, {{type_tag, wanted.type}});
    }
    SetAttributes(property, {{value_tag, wanted.value}});
}

RVT_Node& AddElementWithProperties(RVT_Node& parent, std::string_view name, std::string_view id,
                                   std::span<const NewProperty> properties) {
    RVT_Node& element = AddElement(parent, name);
    SetAttributes(element, {{ID_tag, id}});
    RVT_Node& property_map = AddElement(element, PropertyMap);
    SetAttributes(property_map, {{ID_tag, PropertyMapID(id)}});
    for (const NewProperty& property : properties) {
        AddProperty(property_map, property);
    }
    return element;
}
