// What differs between two inventories.
//
//     for (const Difference& difference : Comparison(before, now).Differences()) { ... }
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plan/content.h"

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
// below the same platform. What is inside a standalone console counts as a part of that.
class Comparison {
  public:
    Comparison(const Outline& before, const Outline& now);

    // The root's first, then what is removed, then the others in the order of "now". None when the
    // contents are equal.
    [[nodiscard]] std::vector<Difference> Differences() const;
    [[nodiscard]] bool IsEqual() const;

    [[nodiscard]] const Elements& before() const { return before_; }
    [[nodiscard]] const Elements& now() const { return now_; }
    [[nodiscard]] const MapContent& map_before() const { return map_before_; }
    [[nodiscard]] const MapContent& map_now() const { return map_now_; }
    // An element's partner in the other inventory, or null.
    [[nodiscard]] const Element* Now(const Element& before) const { return nows_[before.index]; }
    [[nodiscard]] const Element* Before(const Element& now) const { return befores_[now.index]; }
    // Whether two partners are at the same platform, or at none.
    [[nodiscard]] bool StaysInPlace(const Element& before, const Element& now) const;

  private:
    void MatchByName(Owner owner);
    void MatchByIdentifier(Owner owner);
    void Match(const Element& before, const Element& now);
    [[nodiscard]] std::optional<Difference> DifferenceOfMaps() const;
    [[nodiscard]] std::optional<Difference> DifferenceOf(const Element* before,
                                                         const Element* now) const;

    MapContent map_before_;
    MapContent map_now_;
    Elements before_;
    Elements now_;
    // Partners by the index of an element.
    Elements nows_;
    Elements befores_;
};

// A difference as people read it, without its line end; several lines for the root:
//
//   ~ security: "false" -> "true"
//   - console "db9": platform "lab1", port "2009"
//   + platform "lab2": addr "10.1.0.7", port "7001", model "M100", cache
//   ~ console "db1": name "db1" -> "db2", port "2003" -> "2005"
//
// Of an element that was added or removed, values that a new one has unless told otherwise are left
// out. A cache is added, removed or changed.
std::string TextOf(const Difference& difference);
