// The subtree that a platform and a console have in common.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "xml/rvt_node.h"

// A property of a new element; "type" is left out when empty.
struct NewProperty {
    std::string_view name;
    std::string_view value;
    std::string_view type = {};
};

// Appends to "parent" an element "name" with the identifier "id" and a property map of these
// properties, in order. Returns it.
RVT_Node& AddElementWithProperties(RVT_Node& parent, std::string_view name, std::string_view id,
                                   std::span<const NewProperty> properties);
