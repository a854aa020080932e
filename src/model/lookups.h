// Finding things in the map and changing them. A lookup that fails returns null, or kLookupFailed,
// with its message in rvt_err_msg; messages name the searched node by its element name. Removed
// elements are not found. All comparisons are exact.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "base/exit_code.h"
#include "xml/rvt_node.h"

// The root element of rvt_xml_tree. "Cannot find SystemMap element."
RVT_Node* FindSystemMap();

// The first platform whose property "property" has the text "value"; platforms without that
// property are passed over. "Cannot find Platform \"%s\"."
RVT_Node* FindPlatform(std::string_view property, const std::string& value);

// The first console of "parent" whose property "property" has the text "value". A console without
// that property ends the search, with that lookup's message. "Cannot find Console \"%s\" in %s."
RVT_Node* FindConsole(const RVT_Node& parent, std::string_view property, const std::string& value);

// The first live property map below "node". "Cannot find PropertyMap in \"%s\"."
RVT_Node* FindPropertyMap(const RVT_Node& node);

// The first property called "name", removed or not. "Cannot find Property \"name=%s\" in \"%s\"."
RVT_Node* FindProperty(const RVT_Node& property_map, std::string_view name);

// The first live cache below "platform". "Cannot find Cache for platform \"%s\"." with the
// platform's name.
RVT_Node* FindCache(const RVT_Node& platform);

// The attribute called "name". "Cannot find attribute \"%s=\" in \"%s\"."
RVT_Node* FindAttribute(const RVT_Node& node, std::string_view name);

// The attribute called "name", or null without a message.
RVT_Node* AttributeOf(const RVT_Node& node, std::string_view name);

// The "value" attribute of the property "name" of a platform or console, or null with the message
// of the lookup that failed.
RVT_Node* FindPropertyValue(const RVT_Node& node, std::string_view name);

// The text of a property. It stays valid for the whole run.
ExitCode GetPropertyValue(const RVT_Node& node, std::string_view name, std::string_view& value);

// The texts of several properties, read in one walk: "values" has a place for each of "names", at
// most kMostProperties. Fails, in the order of "names", at the first that GetPropertyValue fails
// at.
inline constexpr size_t kMostProperties = 16;
ExitCode GetPropertyValues(const RVT_Node& node, std::span<const std::string_view> names,
                           std::span<std::string_view> values);

// Appends attributes, name and value each, in order; never replaces one.
void SetAttributes(RVT_Node& node,
                   std::initializer_list<std::pair<std::string_view, std::string_view>> pairs);

// A new element "name" as the last child of "parent".
RVT_Node& AddElement(RVT_Node& parent, std::string_view name);
