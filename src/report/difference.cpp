#include "report/difference.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

using enum Property;

namespace {

using Value = std::optional<std::string>;

void AddChange(std::vector<ValueChange>& changes, std::string_view key, Value before, Value now) {
    if (before != now) {
        changes.push_back({std::string(key), std::move(before), std::move(now)});
    }
}

Value ValueOf(const PropertyValues& values, Property property) {
    return values.Has(property) ? Value(values[property]) : std::nullopt;
}

// Both are in order; of what differs in its text alone, the words come together.
void AddOddities(std::vector<ValueChange>& changes, const std::vector<Oddity>& before,
                 const std::vector<Oddity>& now) {
    auto left = before.begin();
    auto right = now.begin();
    while (left != before.end() || right != now.end()) {
        const bool take_left =
            right == now.end() || (left != before.end() && left->what <= right->what);
        const bool take_right =
            left == before.end() || (right != now.end() && right->what <= left->what);
        const std::string& what = take_left ? left->what : right->what;
        AddChange(changes, what, take_left ? Value(left->text) : std::nullopt,
                  take_right ? Value(right->text) : std::nullopt);
        left += take_left ? 1 : 0;
        right += take_right ? 1 : 0;
    }
}

Value CacheOf(const Content& content) {
    return content.cache == nullptr ? Value() : XmlText(*content.cache);
}

std::vector<ValueChange> ChangesBetween(Owner owner, const Content& before, const Content& now) {
    std::vector<ValueChange> changes;
    for (const Property property : PropertiesOf(owner)) {
        AddChange(changes, RowOf(property).key, ValueOf(before.values, property),
                  ValueOf(now.values, property));
    }
    AddOddities(changes, before.oddities, now.oddities);
    if (!HaveSameCache(before, now)) {
        changes.push_back({"cache", CacheOf(before), CacheOf(now)});
    }
    return changes;
}

// The name of the platform that an element is inside of.
Value PlatformOf(const Elements& items, size_t item) {
    const size_t platform = item == kNone ? kNone : items[item].platform;
    return platform == kNone ? Value() : Value(items[platform].name);
}

}  // namespace

Comparison::Comparison(Outline before, Outline now)
    : map_before_(ContentOf(before.map)),
      map_now_(ContentOf(now.map)),
      before_(std::move(before.elements)),
      now_(std::move(now.elements)),
      now_of_(before_.size(), kNone),
      before_of_(now_.size(), kNone) {
    for (const Owner owner : {Owner::kPlatform, Owner::kConsole}) {
        MatchByName(owner);
        MatchByIdentifier(owner);
    }
}

void Comparison::Match(size_t before, size_t now) {
    now_of_[before] = now;
    before_of_[now] = before;
}

namespace {

// The elements of one kind that had no partner at first, by name. Most elements stand where their
// partner does, so the one behind the last that was found is tried before the table, which is not
// made until then.
class ElementsByName {
  public:
    ElementsByName(const Elements& items, Owner owner, const std::vector<size_t>& partners)
        : items_(items), owner_(owner), partners_(partners) {}

    // The first one called "name" that has no partner.
    size_t Find(std::string_view name) {
        while (guess_ < items_.size() && items_[guess_].owner != owner_) {
            ++guess_;
        }
        const bool is_next =
            guess_ < items_.size() && partners_[guess_] == kNone && items_[guess_].name == name;
        const size_t found = is_next ? guess_ : FindInTable(name);
        guess_ = found == kNone ? guess_ : found + 1;
        return found;
    }

  private:
    size_t FindInTable(std::string_view name) {
        if (next_.empty()) {
            Fill();
        }
        const auto known = first_.find(name);
        if (known == first_.end()) {
            return kNone;
        }
        size_t& first = known->second;
        while (first != kNone && partners_[first] != kNone) {
            first = next_[first];
        }
        return first;
    }
    void Fill() {
        next_.assign(items_.size(), kNone);
        first_.reserve(items_.size());
        for (size_t i = items_.size(); i-- > 0;) {
            if (items_[i].owner == owner_ && partners_[i] == kNone) {
                size_t& first = first_.try_emplace(items_[i].name, kNone).first->second;
                next_[i] = std::exchange(first, i);
            }
        }
    }

    const Elements& items_;
    Owner owner_;
    const std::vector<size_t>& partners_;
    size_t guess_ = 0;
    std::unordered_map<std::string_view, size_t> first_;
    std::vector<size_t> next_;  // of the same name
};

}  // namespace

void Comparison::MatchByName(Owner owner) {
    if (before_.empty()) {
        return;
    }
    ElementsByName waiting(before_, owner, now_of_);
    for (size_t now = 0; now < now_.size(); ++now) {
        if (now_[now].owner == owner) {
            if (const size_t found = waiting.Find(now_[now].name); found != kNone) {
                Match(found, now);
            }
        }
    }
}

static std::string IdentifierKey(const Element& item, size_t platform_now) {
    return std::string(item.id).append(1, '\0').append(std::to_string(platform_now));
}

// Those that have no partner, by identifiers and the platform's partner.
std::unordered_map<std::string, size_t> Comparison::WithoutPartner(Owner owner) const {
    std::unordered_map<std::string, size_t> left;
    for (size_t i = 0; i < before_.size(); ++i) {
        const Element& item = before_[i];
        const size_t platform = item.platform == kNone ? kNone : now_of_[item.platform];
        const bool has_place = platform != kNone || item.platform == kNone;
        if (item.owner == owner && now_of_[i] == kNone && !item.id.empty() && has_place) {
            left.try_emplace(IdentifierKey(item, platform), i);
        }
    }
    return left;
}

void Comparison::MatchByIdentifier(Owner owner) {
    std::unordered_map<std::string, size_t> left = WithoutPartner(owner);
    for (size_t i = 0; i < now_.size() && !left.empty(); ++i) {
        if (now_[i].owner != owner || before_of_[i] != kNone) {
            continue;
        }
        const auto found = left.find(IdentifierKey(now_[i], now_[i].platform));
        if (found != left.end()) {
            Match(found->second, i);
            left.erase(found);
        }
    }
}

bool Comparison::StaysInPlace(size_t before, size_t now) const {
    const size_t from = before_[before].platform;
    const size_t to = now_[now].platform;
    return from == kNone || to == kNone ? from == to : now_of_[from] == to;
}

std::optional<Difference> Comparison::DifferenceOf(size_t before, size_t now) const {
    const bool is_pair = before != kNone && now != kNone;
    const Element& item = before != kNone ? before_[before] : now_[now];
    if (is_pair && StaysInPlace(before, now) && AreAlike(item, now_[now])) {
        return std::nullopt;
    }
    Difference difference = {Sign::kChanged, KindOf(item.owner), std::string(item.name), {}};
    difference.sign = is_pair ? Sign::kChanged : now == kNone ? Sign::kRemoved : Sign::kAdded;
    if (!is_pair || !StaysInPlace(before, now)) {
        AddChange(difference.values, "platform", PlatformOf(before_, before),
                  PlatformOf(now_, now));
    }
    for (ValueChange& change :
         ChangesBetween(item.owner, before == kNone ? Content() : ContentOf(item),
                        now == kNone ? Content() : ContentOf(now_[now]))) {
        difference.values.push_back(std::move(change));
    }
    return difference.values.empty() && is_pair ? std::nullopt : std::optional(difference);
}

std::optional<Difference> Comparison::DifferenceOfMaps() const {
    Difference map = {Sign::kChanged, "map", "", {}};
    AddChange(map.values, "security", Value(map_before_.security), Value(map_now_.security));
    AddOddities(map.values, map_before_.oddities, map_now_.oddities);
    return map.values.empty() ? std::nullopt : std::optional(map);
}

std::vector<Difference> Comparison::Differences() const {
    std::vector<Difference> differences;
    const auto add = [&differences](std::optional<Difference> difference) {
        if (difference) {
            differences.push_back(std::move(*difference));
        }
    };
    add(DifferenceOfMaps());
    for (size_t i = 0; i < before_.size(); ++i) {
        if (now_of_[i] == kNone) {
            add(DifferenceOf(i, kNone));
        }
    }
    for (size_t i = 0; i < now_.size(); ++i) {
        add(DifferenceOf(before_of_[i], i));
    }
    return differences;
}

bool Comparison::IsEqual() const {
    if (DifferenceOfMaps() || std::ranges::find(now_of_, kNone) != now_of_.end()) {
        return false;
    }
    for (size_t i = 0; i < now_.size(); ++i) {
        if (before_of_[i] == kNone || DifferenceOf(before_of_[i], i)) {
            return false;
        }
    }
    return true;
}
