// Finding things in the map and making them. A lookup that finds nothing returns null or an empty
// optional and says nothing; who reports it has the message made by one of the functions whose
// names end in Missing. Removed elements are not found. All comparisons are exact.
#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "base/outcome.h"
#include "xml/rvt_node.h"

// The root element of rvt_xml_tree.
RVT_Node* FindSystemMap();

// The first platform called "name"; platforms without a name are passed over.
RVT_Node* FindPlatform(std::string_view name);

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

// The "value" attribute of the property "name" of a platform or console.
RVT_Node* FindPropertyValue(const RVT_Node& element, std::string_view name);

// The text of a property. It stays valid for the whole run.
std::optional<std::string_view> GetPropertyValue(const RVT_Node& element, std::string_view name);

// The texts of several properties, read in one walk: "values" has a place for each of "names", at
// most kMostProperties. Fails as PropertyMissing, for the first of "names" that is missing.
inline constexpr size_t kMostProperties = 16;
Outcome GetPropertyValues(const RVT_Node& element, std::span<const std::string_view> names,
                          std::span<std::string_view> values);

// "Cannot find SystemMap element."
Outcome SystemMapMissing(ExitCode code);

// kLookupFailed "Cannot find Platform \"%s\".", or as SystemMapMissing without a root.
Outcome PlatformMissing(std::string_view name);

// kLookupFailed for a property of "element" that GetPropertyValue does not find, with the part that
// is missing and the element name of the node that was searched: "Cannot find PropertyMap in
// \"%s\".", "Cannot find Property \"name=%s\" in \"%s\".", or "Cannot find attribute \"%s=\" in
// \"%s\"." for its value.
Outcome PropertyMissing(const RVT_Node& element, std::string_view name);

// Appends attributes, name and value each, in order; never replaces one.
void SetAttributes(RVT_Node& node,
                   std::initializer_list<std::pair<std::string_view, std::string_view>> pairs);

// A new element "name" as the last child of "parent".
RVT_Node& AddElement(RVT_Node& parent, std::string_view name);
