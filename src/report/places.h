// Names, addresses and ports of two inventories that their elements change between: who leaves
// which, and who comes to which.
#pragma once

#include <unordered_map>
#include <unordered_set>

#include "report/work.h"

// Where a port counts: below a platform as it was (its index), or at the address of a standalone
// console.
struct PortPlace {
    size_t platform;
    std::string_view address;
    std::string_view port;
    bool operator==(const PortPlace&) const = default;
};

struct PortPlaceHash {
    size_t operator()(const PortPlace& place) const {
        static constexpr auto kMix = static_cast<size_t>(0x9E3779B97F4A7C15U);
        const std::hash<std::string_view> hash;
        return ((place.platform * kMix) ^ hash(place.address)) * kMix ^ hash(place.port);
    }
};

// Values that neither inventory has, each given once. What they have is looked up when the first
// one is asked for.
class FreshValues {
  public:
    explicit FreshValues(const Comparison& comparison) : comparison_(comparison) {}

    // Of a name, an address or a port.
    std::string Take(Property property);

  private:
    void Fill();

    const Comparison& comparison_;
    std::unordered_set<std::string> used_;
    unsigned next_ = 0;
};

// Who must have gone before a unit's command: a unit, and what it has that is in the way: kName,
// kAddress or kPort. With "arrives" it must have come instead, whatever it has. With "returns" it
// comes back to the same place.
struct Wait {
    size_t unit;
    Property for_what;
    bool arrives = false;
    bool returns = false;
};

class Places {
  public:
    // Of all units of "work", which it extends by those of standalone consoles that stand where a
    // platform comes to.
    Places(Work& work, const Comparison& comparison);

    // To be called when "work" has all units.
    void Index();

    [[nodiscard]] std::vector<Wait> WaitsOf(size_t unit) const;

  private:
    void MakeRoomForPlatforms();
    void IndexUnit(size_t unit);
    [[nodiscard]] bool Sets(const Unit& unit, Property property) const;
    void WaitForName(size_t unit, std::vector<Wait>& waits) const;
    void WaitForAddress(size_t unit, std::vector<Wait>& waits) const;
    void WaitForPort(size_t unit, std::vector<Wait>& waits) const;
    void WaitBelowPlatform(size_t platform_now, std::string_view port,
                           std::vector<Wait>& waits) const;
    void WaitAtAddress(std::string_view address, std::string_view port,
                       std::vector<Wait>& waits) const;
    void WaitForHolders(const PortPlace& place, std::vector<Wait>& waits) const;
    [[nodiscard]] bool Moves(size_t platform_now) const;

    Work& work_;
    const Comparison& comparison_;
    std::unordered_multimap<std::string, size_t> names_left_;  // in lower case
    std::unordered_multimap<PortPlace, size_t, PortPlaceHash> ports_left_;
    std::unordered_map<std::string_view, size_t> platforms_before_at_;  // kept ones, by address
    std::unordered_map<std::string_view, size_t> platforms_coming_to_;  // units, by address
    std::unordered_multimap<std::string_view, size_t> consoles_at_;     // units, by old address
};
