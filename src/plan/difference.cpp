#include "plan/difference.h"

#include <algorithm>
#include <map>
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
    return content.cache.empty() ? Value() : content.cache;
}

// What differs between two partners; of one without a partner, all that it has.
std::vector<ValueChange> ChangesBetween(const Element* before, const Element* now) {
    std::vector<ValueChange> changes;
    const PropertyValues old_values =
        before == nullptr ? PropertyValues() : ComparedValues(*before);
    const PropertyValues new_values = now == nullptr ? PropertyValues() : ComparedValues(*now);
    for (const Property property : PropertiesOf((before == nullptr ? now : before)->owner)) {
        AddChange(changes, RowOf(property).key, ValueOf(old_values, property),
                  ValueOf(new_values, property));
    }
    const Content old_content = before == nullptr ? Content() : ContentOf(*before);
    const Content new_content = now == nullptr ? Content() : ContentOf(*now);
    AddOddities(changes, old_content.oddities, new_content.oddities);
    AddChange(changes, "cache", CacheOf(old_content), CacheOf(new_content));
    return changes;
}

// The name of the platform that an element is inside of.
Value PlatformOf(const Element* element) {
    const bool is_inside = element != nullptr && element->parent != nullptr;
    return is_inside ? Value(element->parent->Name()) : Value();
}

Elements WithoutThoseInConsoles(Elements elements) {
    std::erase_if(elements, [](const Element* element) {
        return element->parent != nullptr && !element->IsInPlatform();
    });
    return elements;
}

}  // namespace

Comparison::Comparison(const Outline& before, const Outline& now)
    : map_before_(ContentOf(before.map)),
      map_now_(ContentOf(now.map)),
      before_(WithoutThoseInConsoles(before.elements)),
      now_(WithoutThoseInConsoles(now.elements)),
      nows_(before.elements.size()),
      befores_(now.elements.size()) {
    for (const Owner owner : {Owner::kPlatform, Owner::kConsole}) {
        MatchByName(owner);
        MatchByIdentifier(owner);
    }
}

void Comparison::Match(const Element& before, const Element& now) {
    nows_[before.index] = &now;
    befores_[now.index] = &before;
}

namespace {

// The elements of one kind that had no partner at first, by name. Most elements are where their
// partner is, so the one behind the last that was found is tried before the table, which is not
// made until then.
class ElementsByName {
  public:
    ElementsByName(const Elements& elements, Owner owner, const Elements& partners)
        : elements_(elements), owner_(owner), partners_(partners), guess_(elements.begin()) {}

    // The first one called "name" that has no partner, or null.
    const Element* Find(std::string_view name) {
        guess_ = std::find_if(guess_, elements_.end(),
                              [this](const Element* element) { return element->owner == owner_; });
        if (guess_ != elements_.end() && IsWaiting(**guess_) && (*guess_)->Name() == name) {
            return *guess_++;
        }
        const Element* found = FindInTable(name);
        if (found != nullptr) {
            guess_ = std::ranges::upper_bound(elements_, found->index, {}, &Element::index);
        }
        return found;
    }

  private:
    [[nodiscard]] bool IsWaiting(const Element& element) const {
        return partners_[element.index] == nullptr;
    }
    const Element* FindInTable(std::string_view name) {
        if (!std::exchange(is_filled_, true)) {
            for (auto element = elements_.rbegin(); element != elements_.rend(); ++element) {
                if ((*element)->owner == owner_ && IsWaiting(**element)) {
                    waiting_[(*element)->Name()].push_back(*element);
                }
            }
        }
        const auto known = waiting_.find(name);
        while (known != waiting_.end() && !known->second.empty()) {
            if (IsWaiting(*known->second.back())) {
                return known->second.back();
            }
            known->second.pop_back();
        }
        return nullptr;
    }

    const Elements& elements_;
    Owner owner_;
    const Elements& partners_;
    Elements::const_iterator guess_;
    std::unordered_map<std::string_view, Elements> waiting_;  // the first one last
    bool is_filled_ = false;
};

}  // namespace

void Comparison::MatchByName(Owner owner) {
    ElementsByName waiting(before_, owner, nows_);
    for (const Element* now : now_) {
        const Element* found = now->owner == owner ? waiting.Find(now->Name()) : nullptr;
        if (found != nullptr) {
            Match(*found, *now);
        }
    }
}

void Comparison::MatchByIdentifier(Owner owner) {
    // By the identifier and what the platform is now.
    std::map<std::pair<std::string_view, const Element*>, const Element*> left;
    for (const Element* before : before_) {
        const Element* platform = before->parent == nullptr ? nullptr : Now(*before->parent);
        const bool has_place = platform != nullptr || before->parent == nullptr;
        if (before->owner == owner && Now(*before) == nullptr && !before->id.empty() && has_place) {
            left.try_emplace({before->id, platform}, before);
        }
    }
    for (const Element* now : now_) {
        if (!left.empty() && now->owner == owner && Before(*now) == nullptr) {
            if (const auto found = left.extract({now->id, now->parent}); !found.empty()) {
                Match(*found.mapped(), *now);
            }
        }
    }
}

bool Comparison::StaysInPlace(const Element& before, const Element& now) const {
    return before.parent == nullptr || now.parent == nullptr ? before.parent == now.parent
                                                             : Now(*before.parent) == now.parent;
}

std::optional<Difference> Comparison::DifferenceOf(const Element* before,
                                                   const Element* now) const {
    const Element& element = before != nullptr ? *before : *now;
    const bool is_pair = before != nullptr && now != nullptr;
    const bool moves = !is_pair || !StaysInPlace(*before, *now);
    if (!moves && AreAlike(*before, *now)) {
        return std::nullopt;
    }
    Difference difference = {
        Sign::kChanged, KindOf(element.owner), std::string(element.Name()), {}};
    difference.sign = is_pair ? Sign::kChanged : now == nullptr ? Sign::kRemoved : Sign::kAdded;
    if (moves) {
        AddChange(difference.values, "platform", PlatformOf(before), PlatformOf(now));
    }
    std::ranges::move(ChangesBetween(before, now), std::back_inserter(difference.values));
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
    for (const Element* before : before_) {
        if (Now(*before) == nullptr) {
            add(DifferenceOf(before, nullptr));
        }
    }
    for (const Element* now : now_) {
        add(DifferenceOf(Before(*now), now));
    }
    return differences;
}

bool Comparison::IsEqual() const {
    return !DifferenceOfMaps() && std::ranges::all_of(before_, [this](const Element* before) {
        return Now(*before) != nullptr;
    }) && std::ranges::all_of(now_, [this](const Element* now) {
        return Before(*now) != nullptr && !DifferenceOf(Before(*now), now);
    });
}
