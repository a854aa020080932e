// What is to be done for each platform and console so that one inventory gets the content of
// another, before anybody asks in which order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "commands/command.h"
#include "report/difference.h"

// One command of a change script.
struct Step {
    Command command;
    std::string subject;   // whom it is for: console "db1"
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
    size_t before = kNone;  // none: it is added
    size_t now = kNone;
    NameValueList settings;
    bool changes_cache = false;

    [[nodiscard]] bool IsAddition() const { return before == kNone; }
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
    [[nodiscard]] bool IsKept(size_t before) const { return kept_[before]; }
    // The index of the unit of an element as it shall be, or kNone.
    [[nodiscard]] size_t UnitOf(size_t now) const { return unit_of_[now]; }
    // The same; an element that is kept as it is gets a unit without settings.
    size_t Need(size_t now);

    // Lets the unit set a property, if it does not, to what it shall be.
    void Set(Unit& unit, Property property) const;

  private:
    void Judge(const Element& item, Property property, std::string_view value, bool is_new);
    void JudgeMap();
    void JudgeText(const Element& item, std::string_view value);
    void JudgeTexts(const Element& item, const RVT_Node& node);
    [[nodiscard]] bool CanBeKept(size_t before, size_t now) const;
    void PlanItem(size_t now);
    void PlanAddition(const Element& item, const Content& content);
    void PlanUpdate(size_t before, size_t now);
    void TakeOddities(const Element& item, const std::vector<Oddity>& before,
                      const std::vector<Oddity>& now);
    void PlanRemovals();
    void Obstruct(const std::string& subject, std::string text,
                  ExitCode code = ExitCode::kIncompleteMap);

    const Comparison& comparison_;
    ReferenceFiles files_;
    std::vector<bool> kept_;
    std::vector<size_t> unit_of_;
};
