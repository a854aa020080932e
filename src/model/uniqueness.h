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

// The same counts for a caller that puts prefixes "P-" before many names. Names are kept by what
// stands behind their prefixes, so that a name that thousands have costs no more than thousands of
// names.
class NameIndex {
  public:
    explicit NameIndex(const RVT_Node& map);

    // What GetCountOfConsolesWithName returns.
    [[nodiscard]] int Count(std::string_view name) const;
    // Renames one element that is called "name", which others are called too: as many prefixes as
    // it takes, at least one, for a name that nobody has. Returns that.
    std::string Rename(std::string_view name);

  private:
    // Names that differ in the number of their prefixes alone.
    struct Family {
        std::unordered_map<size_t, int> uses;
        std::unordered_map<size_t, size_t> next;  // from a number in use to one that may be free
    };
    static size_t FirstFree(Family& family, size_t from);

    std::unordered_map<std::string, Family> families_;  // by the rest of the name in lower case
};

// Whether a platform or standalone console other than "node" (null for none) has "address".
bool IsDuplicateAddress(const RVT_Node& map, const RVT_Node* node, std::string_view address);

// How many use "port" at "address": a platform or standalone console there by its own port, or, at
// a platform whose own port is another, each of its consoles.
int GetCountOfConsolesWithAddress(const RVT_Node& map, std::string_view address,
                                  std::string_view port);
