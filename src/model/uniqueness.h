// Which names, addresses and ports a map uses already, found by walking it. Elements count also
// when the command has removed them; an element that lacks the property in question is passed over.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "xml/rvt_node.h"

// How many platforms and consoles of "map", standalone or inside platforms, are called "name",
// letter case ignored. A platform without a name is passed over with its consoles.
int GetCountOfConsolesWithName(const RVT_Node& map, std::string_view name);

// The same counts for a caller that asks for many and changes names meanwhile: an index that is
// built once and kept true.
class NameIndex {
  public:
    explicit NameIndex(const RVT_Node& map);

    // What GetCountOfConsolesWithName returns.
    [[nodiscard]] int Count(std::string_view name) const;
    // To be told when an element that has a name gets another.
    void Rename(std::string_view from, std::string_view to);

  private:
    std::unordered_map<std::string, int> counts_;  // by name in lower case
};

// Whether a platform or standalone console other than "node" (null for none) has "address".
bool IsDuplicateAddress(const RVT_Node& map, const RVT_Node* node, std::string_view address);

// How many use "port" at "address": a platform or standalone console there by its own port, or, at
// a platform whose own port is another, each of its consoles.
int GetCountOfConsolesWithAddress(const RVT_Node& map, std::string_view address,
                                  std::string_view port);
