// Which names, addresses and ports the map uses already. Elements count also when the run has
// removed them; an element that lacks the property in question is passed over.
#pragma once

#include <string_view>

#include "xml/rvt_node.h"

// How many platforms and consoles, standalone or inside platforms, are called "name", letter case
// ignored. A platform without a name is passed over with its consoles. 21 when there is no root
// element, which reads as taken.
int GetCountOfConsolesWithName(std::string_view name);
bool IsDuplicateName(std::string_view name);

// Whether a platform or standalone console other than "node" (null for none) has "address".
bool IsDuplicateAddress(const RVT_Node* node, std::string_view address);

// How many use "port" at "address": a platform or standalone console there by its own port, or, at
// a platform whose own port is another, each of its consoles. 0 when there is no root element.
int GetCountOfConsolesWithAddress(std::string_view address, std::string_view port);
bool IsDuplicatePortWithinAddress(std::string_view address, std::string_view port);
