#include "report/order.h"

#include <algorithm>
#include <optional>

#include "report/crowd.h"
#include "report/places.h"

using enum Property;

namespace {

// What -update cache reads.
std::string CacheDocument(const RVT_Node& cache) {
    return "<?xml version=\"1.0\"?>\n" + XmlText(cache);
}

// Gives each unit its turn after those that it waits for. The stack stands in memory of its own: a
// chain of renames may be as long as the inventory.
class Turns {
  public:
    // The steps are added to those that are there.
    Turns(Work& work, const Comparison& comparison, const Places& places, FreshValues& fresh,
          std::vector<Step>& steps)
        : work_(work),
          comparison_(comparison),
          places_(places),
          fresh_(fresh),
          steps_(steps),
          progress_(work.units.size()) {}

    void Take(size_t unit) {
        Begin(unit, kName);
        while (!stack_.empty()) {
            Turn& turn = stack_.back();
            if (turn.next < turn.waits.size()) {
                const Wait wait = turn.waits[turn.next++];
                Await(wait);
            } else {
                Finish(turn.unit);
                stack_.pop_back();
            }
        }
    }

  private:
    enum class State { kNew, kWaiting, kDone };
    struct Progress {
        State state = State::kNew;
        std::string name;  // that the element has for the time being, if it is another
        std::vector<Property> aside;
    };
    struct Turn {
        size_t unit;
        Property awaited_for;
        std::vector<Wait> waits;
        size_t next = 0;
    };

    void Begin(size_t unit, Property awaited_for) {
        if (progress_[unit].state == State::kNew) {
            progress_[unit].state = State::kWaiting;
            stack_.push_back({unit, awaited_for, places_.WaitsOf(unit)});
        }
    }

    void Await(const Wait& wait) {
        Progress& other = progress_[wait.unit];
        const bool is_aside = std::ranges::find(other.aside, wait.for_what) != other.aside.end();
        if (other.state == State::kDone || (is_aside && !wait.arrives)) {
            return;
        }
        if (wait.arrives && other.state == State::kWaiting) {
            // It waits for this one, which lets it by and has its turn later.
            StepAside(stack_.back().unit, stack_.back().awaited_for);
            progress_[stack_.back().unit].state = State::kNew;
            stack_.pop_back();
        } else if (wait.returns || other.state == State::kWaiting) {
            StepAside(wait.unit, wait.for_what);
        } else {
            Begin(wait.unit, wait.for_what);
        }
    }

    // Gives an element another name, address or port for the time being.
    void StepAside(size_t index, Property property) {
        Unit& unit = work_.units[index];
        Progress& progress = progress_[index];
        Step step = StepOf(unit);
        step.command.settings = {{property, fresh_.Take(property)}};
        if (property == kName) {
            progress.name = step.command.settings.front().value;
        }
        progress.aside.push_back(property);
        work_.Set(unit, property);
        steps_.push_back(std::move(step));
    }

    [[nodiscard]] Step StepOf(const Unit& unit) const {
        const Element& item = comparison_.now()[unit.now];
        const bool is_platform = item.owner == Owner::kPlatform;
        Step step;
        Command& command = step.command;
        if (!unit.IsAddition()) {
            const std::string& name = progress_[work_.UnitOf(unit.now)].name;
            command.action = is_platform ? Action::kUpdatePlatform : Action::kUpdateSystem;
            command.name = name.empty() ? comparison_.before()[unit.before].name : name;
        } else {
            command.action = is_platform ? Action::kAddPlatform : Action::kAddSystem;
            command.name = item.name;
            command.platform = item.platform == kNone ? "" : comparison_.now()[item.platform].name;
        }
        step.subject = Label(item);
        return step;
    }

    void Finish(size_t index) {
        Unit& unit = work_.units[index];
        progress_[index].state = State::kDone;
        if (unit.IsAddition() || !unit.settings.empty()) {
            Step step = StepOf(unit);
            step.command.settings = std::move(unit.settings);
            steps_.push_back(std::move(step));
        }
        if (unit.changes_cache) {
            ChangeCache(unit);
        }
    }

    void ChangeCache(const Unit& unit) {
        const Element& item = comparison_.now()[unit.now];
        const RVT_Node* cache = ContentOf(item).cache;
        Step step = StepOf(unit);
        step.command.action = cache == nullptr ? Action::kRemoveCache : Action::kUpdateCache;
        step.command.name = item.name;
        step.document = cache == nullptr ? "" : CacheDocument(*cache);
        steps_.push_back(std::move(step));
    }

    Work& work_;
    const Comparison& comparison_;
    const Places& places_;
    FreshValues& fresh_;
    std::vector<Step>& steps_;
    std::vector<Progress> progress_;
    std::vector<Turn> stack_;
};

void AddSecurity(const Comparison& comparison, std::vector<Step>& steps) {
    const auto& now = comparison.map_now().security;
    if (now && now != comparison.map_before().security) {
        Step step;
        step.command.action = Action::kSetSecurity;
        step.command.security = *now;
        step.subject = "map";
        steps.push_back(std::move(step));
    }
}

void Append(std::vector<Step>& steps, std::vector<Step> more) {
    std::ranges::move(more, std::back_inserter(steps));
}

}  // namespace

std::vector<Step> InOrder(Work& work, const Comparison& comparison, Crowding crowding) {
    FreshValues fresh(comparison);
    Places places(work, comparison);
    std::optional<Crowd> crowd;
    if (crowding == Crowding::kAllowed) {
        crowd.emplace(work, comparison, fresh);
    }
    places.Index();
    std::vector<Step> steps;
    steps.reserve(1 + work.removals.size() + work.units.size());
    AddSecurity(comparison, steps);
    Append(steps, std::move(work.removals));
    Turns turns(work, comparison, places, fresh, steps);
    for (size_t now = 0; now < comparison.now().size(); ++now) {
        if (work.UnitOf(now) != kNone) {
            turns.Take(work.UnitOf(now));
        }
    }
    if (crowd) {
        Append(steps, crowd->LastSteps());
    }
    return steps;
}
