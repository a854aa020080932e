#include "plan/order.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "base/text.h"

using enum Property;

namespace {

// Values that neither inventory has, each given once. The first one costs a look at all elements.
class FreshValues {
  public:
    explicit FreshValues(const Comparison& comparison) : comparison_(comparison) {}

    // A name, an address or a port.
    std::string Take(Property property) {
        if (next_ == 0) {
            Fill();
        }
        std::string value = Candidate(property, ++next_);
        while (used_.contains(value)) {
            value = Candidate(property, ++next_);
        }
        return value;
    }

  private:
    void Fill() {
        for (const Elements* elements : {&comparison_.before(), &comparison_.now()}) {
            for (const Element* element : *elements) {
                used_.insert(ToLower(element->Name()));
                used_.emplace(element->values[kAddress]);
                used_.emplace(element->values[kPort]);
            }
        }
    }
    // Addresses of a block that no network uses, and ports beyond those that are commonly given.
    static std::string Candidate(Property property, unsigned number) {
        static constexpr unsigned kFirstPort = 61000;
        if (property == kName) {
            return "between-" + std::to_string(number);
        }
        if (property == kPort) {
            return std::to_string(kFirstPort + number);
        }
        return "240." + std::to_string(number >> 16U & 255U) + '.' +
               std::to_string(number >> 8U & 255U) + '.' + std::to_string(number & 255U);
    }

    const Comparison& comparison_;
    std::unordered_set<std::string> used_;
    unsigned next_ = 0;
};

// What a unit can need, and another one have until it gives it up.
enum class Kind : char {
    kName,      // in lower case
    kPlatform,  // that no platform is at an address
    kConsoles,  // that no standalone console is at an address
    kArrival,   // that the platform that comes to an address is there
    kPort       // at an address; of a platform and those inside it at that where it shall be
};

// Something of that kind that somebody has at first.
struct Slot {
    Kind kind;
    std::vector<size_t> holders;  // units, some of which may have given it up
    std::vector<size_t> waiting;
};

// The property by whose change a slot is given up. kArrival never is, but by the unit's command.
Property PropertyOf(Kind kind) {
    return kind == Kind::kName ? kName : kind == Kind::kPort ? kPort : kAddress;
}

// Whether an element that takes another value of "property" for the time being gives up what it has
// of that kind. With its address it leaves its port there.
bool IsGivenUpBy(Property property, Kind kind) {
    return kind != Kind::kArrival &&
           (PropertyOf(kind) == property || (kind == Kind::kPort && property == kAddress));
}

// A unit until its command is made.
struct Turn {
    std::vector<size_t> has;    // slots
    std::vector<size_t> needs;  // the last one is what it waits for
    std::string name;           // in between, if the element has one
    bool is_done = false;
    size_t passed = 0;  // the number of the last way that led past it
};

class Turns {
  public:
    // The steps are added to those that are there.
    Turns(Work& work, const Comparison& comparison, std::vector<Step>& steps)
        : work_(work), comparison_(comparison), fresh_(comparison), steps_(steps) {
        MakeRoomForPlatforms();
        turns_.resize(work_.units.size());
        for (size_t unit = 0; unit < turns_.size(); ++unit) {
            FindWhatItHas(unit);
        }
        for (size_t unit = 0; unit < turns_.size(); ++unit) {
            FindWhatItNeeds(unit);
        }
    }

    void Take() {
        for (size_t unit = 0; unit < turns_.size(); ++unit) {
            free_.push_back(unit);
            TakeFree();
        }
        for (size_t unit = 0; unit < turns_.size(); ++unit) {
            way_.push_back(unit);
            while (!way_.empty()) {
                ParkOrGoBack();
            }
        }
    }

  private:
    // A platform may not come to the address of a standalone console, but the console may come to
    // the platform's: one that stays there leaves for the time being.
    void MakeRoomForPlatforms() {
        std::unordered_set<std::string_view> addresses;
        for (const Unit& unit : work_.units) {
            if (unit.now->owner == Owner::kPlatform && unit.Sets(kAddress)) {
                addresses.insert(unit.now->Address());
            }
        }
        for (const Element* before : comparison_.before()) {
            if (before->IsStandalone() && work_.IsKept(*before) &&
                addresses.contains(before->Address())) {
                Work::Set(work_.units[work_.Need(*comparison_.Now(*before))], kAddress);
            }
        }
    }

    static std::string Key(Kind kind, std::string_view text, std::string_view port = "") {
        std::string key(1, static_cast<char>(kind));
        return key.append(text).append(1, '\0').append(port);
    }

    void FindWhatItHas(size_t index) {
        const Unit& unit = work_.units[index];
        const Element& now = *unit.now;
        const bool is_platform = now.owner == Owner::kPlatform;
        if (is_platform && unit.Sets(kAddress)) {
            Have(index, Kind::kArrival, now.Address());
        }
        if (unit.IsAddition()) {
            return;
        }
        const Element& before = *unit.before;
        const std::string_view address = before.values[kAddress];
        if (unit.Sets(kName)) {
            Have(index, Kind::kName, ToLower(before.Name()));
        }
        if (unit.Sets(kAddress)) {
            Have(index, is_platform ? Kind::kPlatform : Kind::kConsoles, address);
        }
        if (unit.Sets(kPort) || unit.Sets(kAddress)) {
            Have(index, Kind::kPort, before.IsStandalone() ? address : now.Address(),
                 before.values[kPort]);
        }
    }

    void Have(size_t index, Kind kind, std::string_view text, std::string_view port = "") {
        const size_t slot =
            slot_of_.try_emplace(Key(kind, text, port), slots_.size()).first->second;
        if (slot == slots_.size()) {
            slots_.push_back({kind, {}, {}});
        }
        slots_[slot].holders.push_back(index);
        turns_[index].has.push_back(slot);
    }

    // What it needs first comes last.
    void FindWhatItNeeds(size_t index) {
        const Unit& unit = work_.units[index];
        const Element& now = *unit.now;
        const bool is_platform = now.owner == Owner::kPlatform;
        const std::string_view address = now.Address();
        const bool takes_port = unit.Sets(kPort) || unit.Sets(kAddress);
        if (takes_port) {
            Need(index, Kind::kPort, address, now.values[kPort]);
        }
        if (is_platform ? unit.Sets(kAddress) : takes_port) {
            Need(index, Kind::kPlatform, address);
            Need(index, is_platform ? Kind::kConsoles : Kind::kArrival, address);
        }
        if (unit.Sets(kName) || unit.IsAddition()) {
            Need(index, Kind::kName, ToLower(now.Name()));
        }
    }

    // Its own is not in its way, but for a name that changes its letter case alone.
    void Need(size_t index, Kind kind, std::string_view text, std::string_view port = "") {
        const auto slot = slot_of_.find(Key(kind, text, port));
        Turn& turn = turns_[index];
        if (slot != slot_of_.end() &&
            (kind == Kind::kName || std::ranges::find(turn.has, slot->second) == turn.has.end())) {
            turn.needs.push_back(slot->second);
        }
    }

    // One that still has what is in the slot, or kNone.
    size_t HolderOf(size_t index) {
        std::vector<size_t>& holders = slots_[index].holders;
        while (!holders.empty()) {
            const std::vector<size_t>& has = turns_[holders.back()].has;
            if (std::ranges::find(has, index) != has.end()) {
                return holders.back();
            }
            holders.pop_back();
        }
        return kNone;
    }

    void TakeFree() {
        while (!free_.empty()) {
            const size_t unit = free_.back();
            free_.pop_back();
            std::vector<size_t>& needs = turns_[unit].needs;
            while (!needs.empty() && HolderOf(needs.back()) == kNone) {
                needs.pop_back();
            }
            if (needs.empty()) {
                Finish(unit);
            } else {
                slots_[needs.back()].waiting.push_back(unit);
            }
        }
    }

    // All that a unit has or, when it takes a value in between, what that was.
    void GiveUp(size_t unit, std::optional<Property> property) {
        std::vector<size_t>& has = turns_[unit].has;
        const auto gone = std::stable_partition(has.begin(), has.end(), [&](size_t slot) {
            return property && !IsGivenUpBy(*property, slots_[slot].kind);
        });
        const std::vector<size_t> given_up(gone, has.end());
        has.erase(gone, has.end());
        for (const size_t slot : given_up) {
            if (HolderOf(slot) == kNone) {
                std::vector<size_t>& waiting = slots_[slot].waiting;
                free_.insert(free_.end(), waiting.rbegin(), waiting.rend());
                waiting.clear();
            }
        }
    }

    // What a unit that is not done waits for, and who has that.
    [[nodiscard]] Kind KindAwaited(size_t unit) const {
        return slots_[turns_[unit].needs.back()].kind;
    }
    size_t Awaited(size_t unit) { return HolderOf(turns_[unit].needs.back()); }

    // Goes on from the last unit of the way by what each waits for. The first one that is met again
    // is let by.
    void ParkOrGoBack() {
        size_t unit = way_.back();
        if (turns_[unit].is_done) {
            way_.pop_back();
            return;
        }
        for (++ways_; turns_[unit].passed != ways_; unit = Awaited(unit)) {
            turns_[unit].passed = ways_;
            way_.push_back(unit);
        }
        // What waits for a platform to arrive lets that by instead.
        LetBy(KindAwaited(unit) == Kind::kArrival ? Awaited(unit) : unit);
    }

    // It is the first to be let by again, if it is still in a circle: whoever steps aside once more
    // costs less than another.
    void LetBy(size_t unit) {
        way_.push_back(unit);
        StepAside(Awaited(unit), PropertyOf(KindAwaited(unit)));
        TakeFree();
    }

    // Gives an element another name, address or port for the time being.
    void StepAside(size_t index, Property property) {
        Unit& unit = work_.units[index];
        Step step = StepOf(unit);
        step.command.settings = {{property, fresh_.Take(property)}};
        if (property == kName) {
            turns_[index].name = step.command.settings.front().value;
        }
        Work::Set(unit, property);
        steps_.push_back(std::move(step));
        GiveUp(index, property);
    }

    // What an element is called at present; one that is added, as it will be.
    [[nodiscard]] std::string NameOf(const Element& now) const {
        const size_t index = work_.UnitOf(now);
        const bool is_done = index == kNone || turns_[index].is_done;
        if (is_done || work_.units[index].IsAddition()) {
            return std::string(now.Name());
        }
        const std::string& name = turns_[index].name;
        return name.empty() ? std::string(work_.units[index].before->Name()) : name;
    }

    [[nodiscard]] Step StepOf(const Unit& unit) const {
        const Element& now = *unit.now;
        const bool is_platform = now.owner == Owner::kPlatform;
        Step step;
        step.command.name = NameOf(now);
        if (!unit.IsAddition()) {
            step.command.action = is_platform ? Action::kUpdatePlatform : Action::kUpdateSystem;
        } else {
            step.command.action = is_platform ? Action::kAddPlatform : Action::kAddSystem;
            step.command.platform = now.parent == nullptr ? "" : NameOf(*now.parent);
        }
        step.subject = Label(now);
        return step;
    }

    void Finish(size_t index) {
        Unit& unit = work_.units[index];
        if (unit.IsAddition() || !unit.settings.empty()) {
            Step step = StepOf(unit);
            step.command.settings = std::move(unit.settings);
            steps_.push_back(std::move(step));
        }
        turns_[index].is_done = true;
        GiveUp(index, std::nullopt);
        if (unit.changes_cache) {
            ChangeCache(unit);
        }
    }

    void ChangeCache(const Unit& unit) {
        const std::string cache = ContentOf(*unit.now).cache;
        Step step = StepOf(unit);
        step.command.action = cache.empty() ? Action::kRemoveCache : Action::kUpdateCache;
        step.document = cache.empty() ? "" : "<?xml version=\"1.0\"?>\n" + cache;
        steps_.push_back(std::move(step));
    }

    Work& work_;
    const Comparison& comparison_;
    FreshValues fresh_;
    std::vector<Step>& steps_;
    std::unordered_map<std::string, size_t> slot_of_;
    std::vector<Slot> slots_;
    std::vector<Turn> turns_;
    std::vector<size_t> free_;  // units to be tried, the next one last
    std::vector<size_t> way_;   // units each of which waited for the next one when it was passed
    size_t ways_ = 0;
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

}  // namespace

std::vector<Step> InOrder(Work& work, const Comparison& comparison) {
    std::vector<Step> steps;
    steps.reserve(1 + work.removals.size() + work.units.size());
    AddSecurity(comparison, steps);
    std::ranges::move(work.removals, std::back_inserter(steps));
    Turns(work, comparison, steps).Take();
    return steps;
}
