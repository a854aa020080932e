// Finding things in the map and making them. A lookup that finds nothing returns null or an empty
// optional and says nothing; who reports it has the message made by PropertyMissing. Removed
// elements are not found. All comparisons are exact.
#pragma once

#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include "base/outcome.h"
#include "model/properties.h"
#include "xml/rvt_node.h"

// The root element of a map.
RVT_Node* FindSystemMap(const RVT_XML_Tree& tree);

// The first platform of "map" called "name"; platforms without a name are passed over.
RVT_Node* FindPlatform(const RVT_Node& map, std::string_view name);

// The first console of "platform" called "name". A console without a name ends the search.
RVT_Node* FindConsole(const RVT_Node& platform, std::string_view name);

// The first live property map below "element".
RVT_Node* FindPropertyMap(const RVT_Node& element);

// The first property called "name", removed or not.
RVT_Node* FindProperty(const RVT_Node& property_map, std::string_view name);

// The first live cache below "platform".
RVT_Node* FindCache(const RVT_Node& platform);

// The attribute called "name".
RVT_Node* FindAttribute(const RVT_Node& node, std::string_view name);

// The "value" attribute of a property of a platform or console.
RVT_Node* FindPropertyValue(const RVT_Node& element, Property property);

// The text of a property. It stays valid for the whole run.
std::optional<std::string_view> GetPropertyValue(const RVT_Node& element, Property property);

// The same, with the empty text for a property that is missing.
std::string_view PropertyOrEmpty(const RVT_Node& element, Property property);

// The texts of all properties that an "owner" has, read in one walk.
PropertyValues GetPropertyValues(const RVT_Node& element, Owner owner);

// kLookupFailed for a property of "element" that GetPropertyValue does not find, with the part that
// is missing and the element name of the node that was searched: "Cannot find PropertyMap in
// \"%s\".", "Cannot find Property \"name=%s\" in \"%s\".", or "Cannot find attribute \"%s=\" in
// \"%s\"." for its value.
Outcome PropertyMissing(const RVT_Node& element, Property property);

// Appends attributes, name and value each, in order; never replaces one.
void SetAttributes(RVT_Node& node,
                   std::initializer_list<std::pair<std::string_view, std::string_view>> pairs);

// A new element "name" as the last child of "parent".
RVT_Node& AddElement(RVT_Node& parent, std::string_view name);

// A new property as the last of "property_map".
void AddProperty(RVT_Node& property_map, Property property, std::string_view value,
                 bool is_boolean = false);
