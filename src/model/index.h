// Which names, addresses and ports a map uses, in tables: for an inventory that is asked again and
// again. They answer what the walks of lookups.h and uniqueness.h would find.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "model/lookups.h"

class Index {
  public:
    // Of all platforms and consoles of "map"; like that, it lives until the process ends. Null for
    // an irregular map, in which a platform or console has no name, or two platforms or two
    // consoles have the same: what is found then depends on the way of the walk.
    static Index* Of(const RVT_Node& map);

    Index(const Index&) = delete;
    Index& operator=(const Index&) = delete;

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
    Index() = default;

    using PortCounts = std::unordered_map<std::string_view, int>;
    // An address of platforms and standalone consoles.
    struct Site {
        int count = 0;     // of them
        PortCounts ports;  // in use here, also by consoles inside platforms
    };
    // The consoles of a platform. They use ports at its site, once it has one and a port, but for
    // its own port.
    struct Inside {
        Site* site = nullptr;
        std::string_view own_port;
        PortCounts ports;
    };

    bool AddNew(const Place& place);
    void Count(const Place& place, int by);
    void CountAtSite(const RVT_Node& element, int by);
    static void CountInside(Inside& inside, Site& site, std::string_view own_port, int by);

    // By name. Texts of the map live as long as the process.
    std::unordered_map<std::string_view, Place> platforms_;
    std::unordered_map<std::string_view, Place> consoles_;
    std::unordered_map<std::string, int> names_;  // how many, in lower case
    std::unordered_map<std::string_view, Site> sites_;
    std::unordered_map<const RVT_Node*, Inside> inside_;  // by platform
};
