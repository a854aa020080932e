// Finding things in the map and making them. A lookup that finds nothing returns null or an empty
// optional and says nothing; who reports it has the message made by PropertyMissing. Removed
// elements are not found. All comparisons are exact.
#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include "base/outcome.h"
#include "model/properties.h"
#include "xml/rvt_node.h"

// A platform or console and where it was found.
struct Place {
    RVT_Node* element = nullptr;
    RVT_Node* platform = nullptr;  // that a console is inside of; null for the others
};

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

// The attribute called "name"; null for none.
RVT_Node* FindAttribute(const RVT_Node& node, NameId name);
RVT_Node* FindAttribute(const RVT_Node& node, std::string_view name);

// An attribute of the root element. kIncompleteMap "Cannot find the \"%s\" attribute for
// SystemMap."
Result<RVT_Node*> FindMapAttribute(const RVT_Node& map, std::string_view name);

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

// Hands each child of "parent" to the node that "owner_of" names for it, as its last child, or to
// none; those that stay keep their order.
void ShareOutChildren(RVT_Node& parent,
                      const std::function<RVT_Node*(const RVT_Node& child)>& owner_of);

// A new element "name" as the last child of "parent".
RVT_Node& AddElement(RVT_Node& parent, std::string_view name);

// A new platform or console as the last child of "parent", with the identifier "id" and a property
// map of those of "values" that there are, in the order of PropertiesOf.
RVT_Node& AddOwner(RVT_Node& parent, Owner owner, std::string_view id,
                   const PropertyValues& values);

// A new property as the last of "property_map".
void AddProperty(RVT_Node& property_map, Property property, std::string_view value,
                 bool is_boolean = false);
