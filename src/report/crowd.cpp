#include "report/crowd.h"

#include <algorithm>

#include "model/validation.h"

using enum Property;

Crowd::Crowd(Work& work, const Comparison& comparison, FreshValues& fresh)
    : work_(work), comparison_(comparison), fresh_(fresh) {
    for (const Group& group : FindGroups()) {
        Sort(group);
    }
    std::ranges::sort(crowded_);
}

// The platform at whose address each element has its port: itself, the one that it is inside of, or
// one with the address of a standalone console.
static std::vector<size_t> PlatformsOf(const Elements& items) {
    std::unordered_map<std::string_view, size_t> by_address;
    std::vector<size_t> platforms(items.size(), kNone);
    for (size_t i = 0; i < items.size(); ++i) {
        platforms[i] = items[i].owner == Owner::kPlatform ? i : items[i].platform;
        if (platforms[i] == i) {
            by_address.emplace(ValueOf(items[i], kAddress), i);
        }
    }
    for (size_t i = 0; i < items.size(); ++i) {
        if (platforms[i] == kNone) {
            const auto found = by_address.find(ValueOf(items[i], kAddress));
            platforms[i] = found == by_address.end() ? kNone : found->second;
        }
    }
    return platforms;
}

// Those that are to share a port at the address of a platform.
std::vector<Crowd::Group> Crowd::FindGroups() const {
    const Elements& items = comparison_.now();
    const std::vector<size_t> platforms = PlatformsOf(items);
    std::unordered_map<PortPlace, size_t, PortPlaceHash> first;
    std::unordered_map<size_t, Group> groups;  // by their first
    first.reserve(items.size());
    for (size_t i = 0; i < items.size(); ++i) {
        if (platforms[i] == kNone) {
            continue;
        }
        const PortPlace place = {platforms[i], "", ValueOf(items[i], kPort)};
        const size_t other = first.try_emplace(place, i).first->second;
        if (other != i) {
            Group& group = groups.try_emplace(other, Group{other}).first->second;
            group.push_back(i);
        }
    }
    std::vector<Group> found;
    found.reserve(groups.size());
    for (auto& [first_of_all, group] : groups) {
        found.push_back(std::move(group));
    }
    std::ranges::sort(found);
    return found;
}

// Whether a command looks at the port that an element shall have.
bool Crowd::Claims(size_t now) const {
    if (work_.UnitOf(now) == kNone) {
        return false;
    }
    const Unit& unit = work_.units[work_.UnitOf(now)];
    const bool is_console = comparison_.now()[now].owner == Owner::kConsole;
    return unit.IsAddition() || unit.Sets(kPort) || (is_console && unit.Sets(kAddress));
}

// Whether a console inside a platform has had its port there all the time.
bool Crowd::Holds(size_t now) const {
    const size_t unit = work_.UnitOf(now);
    return unit == kNone || (!work_.units[unit].IsAddition() && !work_.units[unit].Sets(kPort));
}

// One of them can have the port by the rules: who is no console inside the platform, else one that
// has it already, else any.
void Crowd::Sort(const Group& group) {
    const Elements& items = comparison_.now();
    const auto is_other = [&](size_t now) { return items[now].platform == kNone; };
    auto ruler = std::ranges::find_if(group, is_other);
    const bool is_claimed = ruler != group.end() && Claims(*ruler);
    if (ruler == group.end()) {
        ruler = std::ranges::find_if(group, [this](size_t now) { return Holds(now); });
        ruler = ruler == group.end() ? group.begin() : ruler;
    }
    for (const size_t now : group) {
        if (now == *ruler || is_other(now) || (Holds(now) && !is_claimed)) {
            continue;
        }
        GiveWay(now);
    }
}

// Lets its command give a console another port, until the others are done.
void Crowd::GiveWay(size_t now) {
    Unit& unit = work_.units[work_.Need(now)];
    work_.Set(unit, kPort);
    for (NameValue& setting : unit.settings) {
        setting.value = setting.property == kPort ? fresh_.Take(kPort) : setting.value;
    }
    crowded_.push_back(now);
}

static Step LastStep(const Element& item, std::string address) {
    Step step;
    step.command.action = Action::kUpdateSystem;
    step.command.name = item.name;
    step.command.settings = {{kAddress, std::move(address)},
                             {kPort, std::string(ValueOf(item, kPort))}};
    step.subject = Label(item);
    return step;
}

// Its own address says nothing, so it gets the one that it shall have, if that will do.
std::vector<Step> Crowd::LastSteps() {
    std::vector<Step> steps;
    if (crowded_.empty()) {
        return steps;
    }
    std::unordered_set<std::string_view> addresses;
    const Elements& items = comparison_.now();
    for (const Element& item : items) {
        if (item.platform == kNone) {
            addresses.insert(ValueOf(item, kAddress));
        }
    }
    for (const size_t now : crowded_) {
        const std::string_view own = ValueOf(items[now], kAddress);
        const bool will_do = IsValidAddress(own) && !addresses.contains(own);
        steps.push_back(LastStep(items[now], will_do ? std::string(own) : fresh_.Take(kAddress)));
    }
    return steps;
}
