// What differs between two inventories.
//
//     const Comparison comparison(before, now);
//     PrintDifferences(comparison.Differences(), Form::kText, out);
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/output.h"
#include "report/content.h"

// A value, or none, in the one inventory and in the other. The key is that of an option without the
// dash; "platform", "cache" and "security"; or an oddity's own words.
struct ValueChange {
    std::string key;
    std::optional<std::string> before;
    std::optional<std::string> now;
};

enum class Sign : char { kRemoved = '-', kAdded = '+', kChanged = '~' };

// Of one platform or console or, with the kind "map", of the root. All values of an element that is
// removed or added, and those that differ of another.
struct Difference {
    Sign sign;
    std::string_view kind;
    std::string name;  // that it had before, where it was there
    std::vector<ValueChange> values;
};

// Two inventories whose platforms and consoles are matched: platforms with platforms, consoles with
// consoles wherever they are, by their names, then by identifiers those that are left, a console's
// below the same platform. Both must outlive it, unchanged.
class Comparison {
  public:
    Comparison(Outline before, Outline now);
    Comparison(const Inventory& before, const Inventory& now)
        : Comparison(OutlineOf(before), OutlineOf(now)) {}

    // The root's first, then what is removed, then the others in the order of "now". None when the
    // contents are equal.
    [[nodiscard]] std::vector<Difference> Differences() const;
    [[nodiscard]] bool IsEqual() const;

    [[nodiscard]] const Elements& before() const { return before_; }
    [[nodiscard]] const Elements& now() const { return now_; }
    [[nodiscard]] const MapContent& map_before() const { return map_before_; }
    [[nodiscard]] const MapContent& map_now() const { return map_now_; }
    // The index of an element's partner in the other inventory, or kNone.
    [[nodiscard]] size_t PartnerOfBefore(size_t before) const { return now_of_[before]; }
    [[nodiscard]] size_t PartnerOfNow(size_t now) const { return before_of_[now]; }
    // Whether two partners are at the same platform, or at none.
    [[nodiscard]] bool StaysInPlace(size_t before, size_t now) const;

  private:
    void Match(size_t before, size_t now);
    void MatchByName(Owner owner);
    void MatchByIdentifier(Owner owner);
    [[nodiscard]] std::unordered_map<std::string, size_t> WithoutPartner(Owner owner) const;
    [[nodiscard]] std::optional<Difference> DifferenceOfMaps() const;
    [[nodiscard]] std::optional<Difference> DifferenceOf(size_t before, size_t now) const;

    MapContent map_before_;
    MapContent map_now_;
    Elements before_;
    Elements now_;
    std::vector<size_t> now_of_;
    std::vector<size_t> before_of_;
};

// How differences are printed, each on a line:
//
//   text   ~ security: "false" -> "true"
//          - console "db9": platform "lab1", port "2009"
//          + platform "lab2": addr "10.1.0.7", port "7001", model "M100", cache
//          ~ console "db1": name "db1" -> "db2", port "2003" -> "2005"
//          Of an element that was added or removed, values that a new one has unless told otherwise
//          are left out. A cache is added, removed or changed.
//   JSON   an array of objects with "change" (removed, added, changed), "kind" (map, platform,
//          console), "name", and "values": an array of objects with "key", "old" and "new", null
//          for none
enum class Form { kText, kJson };
void PrintDifferences(const std::vector<Difference>& differences, Form form, Output& out);

// One of them in the text form, without its line end. Several lines for the root.
std::string TextOf(const Difference& difference);
