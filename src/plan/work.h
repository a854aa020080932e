// What is to be done for each platform and console so that one inventory gets the content of
// another, before anybody asks in which order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "commands/command.h"
#include "model/validation.h"
#include "plan/difference.h"

// No index of a unit.
inline constexpr size_t kNone = SIZE_MAX;

// One command of a change script.
struct Step {
    Command command;
    std::string subject;   // what it is for: console "db1"
    std::string document;  // what -update cache reads
};

// Why no commands lead from one inventory to another: what none can make, what would be lost, or
// which one is refused.
struct Obstacle {
    std::string subject;                       // as of a step
    std::string text;                          // on one line
    ExitCode code = ExitCode::kIncompleteMap;  // of the command that would be refused
};

// What brings a platform or console from what it was to what it shall be: an addition, or an update
// that may have no settings.
struct Unit {
    const Element* before = nullptr;  // null: it is added
    const Element* now = nullptr;
    NameValueList settings = {};
    bool changes_cache = false;

    [[nodiscard]] bool IsAddition() const { return before == nullptr; }
    [[nodiscard]] bool Sets(Property property) const {
        return NewValue(settings, property) != nullptr;
    }
};

// An element is kept and updated, or removed and added: when it is somewhere else, has what no
// update takes away or lacks what none gives, or gets events without logging.
class Work {
  public:
    explicit Work(const Comparison& comparison);

    // In the order of the inventory as it shall be, but those that Need made behind them.
    std::vector<Unit> units;
    std::vector<Step> removals;
    // What no command can make, or what would be lost.
    std::vector<Obstacle> obstacles;

    // Whether an element of the inventory as it was is kept.
    [[nodiscard]] bool IsKept(const Element& before) const { return kept_[before.index]; }
    // The index of the unit of an element as it shall be, or kNone.
    [[nodiscard]] size_t UnitOf(const Element& now) const { return unit_of_[now.index]; }
    // The same; an element that is kept as it is gets a unit without settings.
    size_t Need(const Element& now);

    // Lets the unit set a property, if it does not, to what it shall be.
    static void Set(Unit& unit, Property property);

  private:
    void Judge(const Element& element, Property property, std::string_view value, bool is_new);
    void JudgeMap();
    void JudgeText(const Element& element, std::string_view value);
    void JudgeValues(const Element& element, const PropertyValues& values);
    void JudgeTexts(const Element& element, const RVT_Node& node, bool is_property = false);
    [[nodiscard]] bool CanBeKept(const Element& before, const Element& now) const;
    void PlanElement(const Element& now);
    void PlanAddition(const Element& now);
    void PlanUpdate(const Element& before, const Element& now);
    void TakeOddities(const Element& element, const std::vector<Oddity>& before,
                      const std::vector<Oddity>& now);
    void PlanRemovals();
    void Obstruct(const std::string& subject, std::string text,
                  ExitCode code = ExitCode::kIncompleteMap);

    const Comparison& comparison_;
    ReferenceFiles files_;
    std::vector<bool> kept_;
    std::vector<size_t> unit_of_;
};
