#include "report/places.h"

#include "base/text.h"

using enum Property;

static std::string_view ValueOf(const Elements& items, size_t item, Property property) {
    return ValueOf(items[item], property);
}

void FreshValues::Fill() {
    for (const Elements* items : {&comparison_.before(), &comparison_.now()}) {
        for (const Element& item : *items) {
            used_.insert(ToLower(item.name));
            used_.emplace(ValueOf(item, kAddress));
            used_.emplace(ValueOf(item, kPort));
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

std::string FreshValues::Take(Property property) {
    if (next_ == 0) {
        Fill();
    }
    std::string value = Candidate(property, ++next_);
    while (used_.contains(value)) {
        value = Candidate(property, ++next_);
    }
    return value;
}

Places::Places(Work& work, const Comparison& comparison) : work_(work), comparison_(comparison) {
    for (size_t i = 0; i < comparison_.before().size(); ++i) {
        if (comparison_.before()[i].owner == Owner::kPlatform && work_.IsKept(i)) {
            platforms_before_at_.emplace(ValueOf(comparison_.before(), i, kAddress), i);
        }
    }
    for (size_t i = 0; i < work_.units.size(); ++i) {
        const size_t now = work_.units[i].now;
        if (comparison_.now()[now].owner == Owner::kPlatform && Sets(work_.units[i], kAddress)) {
            platforms_coming_to_.emplace(ValueOf(comparison_.now(), now, kAddress), i);
        }
    }
    MakeRoomForPlatforms();
}

// A platform may not come to the address of a standalone console, but the console may come to the
// platform's.
void Places::MakeRoomForPlatforms() {
    const Elements& items = comparison_.before();
    for (size_t i = 0; i < items.size() && !platforms_coming_to_.empty(); ++i) {
        if (items[i].owner != Owner::kConsole || items[i].platform != kNone || !work_.IsKept(i)) {
            continue;
        }
        const std::string_view address = ValueOf(items, i, kAddress);
        if (platforms_coming_to_.contains(address)) {
            const size_t unit = work_.Need(comparison_.PartnerOfBefore(i));
            work_.Set(work_.units[unit], kAddress);
            consoles_at_.emplace(address, unit);
        }
    }
}

void Places::Index() {
    for (size_t i = 0; i < work_.units.size(); ++i) {
        if (!work_.units[i].IsAddition()) {
            IndexUnit(i);
        }
    }
}

void Places::IndexUnit(size_t unit) {
    const size_t before = work_.units[unit].before;
    const Elements& items = comparison_.before();
    const Element& item = items[before];
    const bool is_platform = item.owner == Owner::kPlatform;
    const bool is_standalone = !is_platform && item.platform == kNone;
    if (Sets(work_.units[unit], kName)) {
        names_left_.emplace(ToLower(item.name), unit);
    }
    if (Sets(work_.units[unit], kPort) || (is_standalone && Sets(work_.units[unit], kAddress))) {
        const std::string_view port = ValueOf(items, before, kPort);
        ports_left_.emplace(is_standalone
                                ? PortPlace{kNone, ValueOf(items, before, kAddress), port}
                                : PortPlace{is_platform ? before : item.platform, "", port},
                            unit);
    }
}

// An addition sets what it must.
bool Places::Sets(const Unit& unit, Property property) const {
    return unit.Sets(property) || (unit.IsAddition() && property == kName);
}

bool Places::Moves(size_t platform_now) const {
    const size_t unit = work_.UnitOf(platform_now);
    return unit != kNone && Sets(work_.units[unit], kAddress);
}

std::vector<Wait> Places::WaitsOf(size_t unit) const {
    std::vector<Wait> waits;
    WaitForName(unit, waits);
    WaitForAddress(unit, waits);
    WaitForPort(unit, waits);
    // Another letter case of its own name is taken by itself.
    std::erase_if(waits,
                  [unit](const Wait& wait) { return wait.unit == unit && wait.for_what != kName; });
    return waits;
}

void Places::WaitForName(size_t unit, std::vector<Wait>& waits) const {
    const Unit& mine = work_.units[unit];
    if (names_left_.empty() || !Sets(mine, kName)) {
        return;
    }
    const auto [first, last] = names_left_.equal_range(ToLower(comparison_.now()[mine.now].name));
    for (auto it = first; it != last; ++it) {
        waits.push_back({it->second, kName});
    }
}

void Places::WaitForAddress(size_t unit, std::vector<Wait>& waits) const {
    const Unit& mine = work_.units[unit];
    if (comparison_.now()[mine.now].owner != Owner::kPlatform || !Sets(mine, kAddress)) {
        return;
    }
    const std::string_view address = ValueOf(comparison_.now(), mine.now, kAddress);
    const auto holder = platforms_before_at_.find(address);
    if (holder != platforms_before_at_.end()) {
        const size_t now = comparison_.PartnerOfBefore(holder->second);
        if (Moves(now)) {
            waits.push_back({work_.UnitOf(now), kAddress});
        }
    }
    const auto [first, last] = consoles_at_.equal_range(address);
    for (auto it = first; it != last; ++it) {
        const size_t now = work_.units[it->second].now;
        const bool returns = ValueOf(comparison_.now(), now, kAddress) == address;
        waits.push_back({it->second, kAddress, false, returns});
    }
}

void Places::WaitForPort(size_t unit, std::vector<Wait>& waits) const {
    const Unit& mine = work_.units[unit];
    const Element& item = comparison_.now()[mine.now];
    const std::string* set = NewValue(mine.settings, kPort);
    const std::string_view port =
        set != nullptr ? *set : ValueOf(comparison_.now(), mine.now, kPort);
    if (item.owner == Owner::kPlatform) {
        if (set != nullptr && !mine.IsAddition()) {
            WaitBelowPlatform(mine.now, port, waits);
        }
    } else if (item.platform == kNone) {
        if (set != nullptr || Sets(mine, kAddress)) {
            WaitAtAddress(ValueOf(comparison_.now(), mine.now, kAddress), port, waits);
        }
    } else if (set != nullptr) {
        // Its port is looked for where the platform is by then.
        if (Moves(item.platform)) {
            waits.push_back({work_.UnitOf(item.platform), kAddress, true});
        }
        WaitBelowPlatform(item.platform, port, waits);
    }
}

// For a platform that is kept, or was added, whose own port or that of a console inside it shall be
// "port".
void Places::WaitBelowPlatform(size_t platform_now, std::string_view port,
                               std::vector<Wait>& waits) const {
    const size_t before = comparison_.PartnerOfNow(platform_now);
    if (before == kNone || !work_.IsKept(before)) {
        return;
    }
    WaitForHolders({before, "", port}, waits);
    // Where it comes to, no standalone console is by then.
    if (!Moves(platform_now)) {
        WaitForHolders({kNone, ValueOf(comparison_.now(), platform_now, kAddress), port}, waits);
    }
}

// For a standalone console.
void Places::WaitAtAddress(std::string_view address, std::string_view port,
                           std::vector<Wait>& waits) const {
    WaitForHolders({kNone, address, port}, waits);
    const auto there = platforms_before_at_.find(address);
    if (there != platforms_before_at_.end()) {
        const size_t now = comparison_.PartnerOfBefore(there->second);
        if (Moves(now)) {
            waits.push_back({work_.UnitOf(now), kAddress});
        } else {
            WaitForHolders({there->second, "", port}, waits);
        }
    }
    const auto coming = platforms_coming_to_.find(address);
    if (coming != platforms_coming_to_.end()) {
        waits.push_back({coming->second, kAddress, true});
        if (!work_.units[coming->second].IsAddition()) {
            WaitForHolders({work_.units[coming->second].before, "", port}, waits);
        }
    }
}

void Places::WaitForHolders(const PortPlace& place, std::vector<Wait>& waits) const {
    if (ports_left_.empty()) {
        return;
    }
    const auto [first, last] = ports_left_.equal_range(place);
    for (auto it = first; it != last; ++it) {
        waits.push_back({it->second, kPort});
    }
}
