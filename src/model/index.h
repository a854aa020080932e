// Which names, addresses and ports a map uses, in tables: for an inventory that is asked again and
// again. They answer what the walks of lookups.h and uniqueness.h would find.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "model/lookups.h"

class Index {
  public:
    // Of all platforms and consoles of "map". None for an irregular map, in which a platform or
    // console has no name, or two platforms or two consoles have the same: what is found then
    // depends on the way of the walk.
    static std::optional<Index> Of(const RVT_Node& map);

    // Whether it looks at a property.
    static bool Holds(Property property) {
        return property == Property::kName || property == Property::kAddress ||
               property == Property::kPort;
    }

    // To be told of an element that the map has from now on, and of one that it has no longer,
    // while its properties are those that it had when it was added. A platform is told of without
    // its consoles.
    void Add(const Place& place);
    void Remove(const Place& place);

    // Null, or a place without an element, for none.
    [[nodiscard]] RVT_Node* FindPlatform(std::string_view name) const;
    [[nodiscard]] Place FindConsole(std::string_view name) const;

    [[nodiscard]] int CountName(std::string_view name) const;
    // Platforms and standalone consoles.
    [[nodiscard]] int CountAddress(std::string_view address) const;
    // As GetCountOfConsolesWithAddress.
    [[nodiscard]] int CountPort(std::string_view address, std::string_view port) const;

  private:
    bool AddNew(const Place& place);
    void Count(const Place& place, int by);
    [[nodiscard]] int At(const std::string& key) const;

    // By name. Texts of the map live as long as the process.
    std::unordered_map<std::string_view, Place> platforms_;
    std::unordered_map<std::string_view, Place> consoles_;
    std::unordered_map<std::string_view, std::vector<const RVT_Node*>> platforms_at_;  // by address
    std::unordered_map<std::string, int> counts_;  // by keys of names, addresses and ports
};
