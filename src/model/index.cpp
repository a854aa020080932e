#include "model/index.h"

#include <algorithm>

#include "base/text.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

// The number that is kept for "key", 0 for none.
template <typename Table, typename Key>
static int At(const Table& table, const Key& key) {
    const auto found = table.find(key);
    return found == table.end() ? 0 : found->second;
}

std::optional<Index> Index::Of(const RVT_Node& map) {
    Index index;
    for (RVT_Node& node : LiveElements(map, tag::Platform, tag::Console)) {
        if (!index.AddNew({&node})) {
            return std::nullopt;
        }
        if (!node.IsName(tag::Platform)) {
            continue;
        }
        for (RVT_Node& console : LiveElements(node, tag::Console)) {
            if (!index.AddNew({&console, &node})) {
                return std::nullopt;
            }
        }
    }
    return index;
}

// False for an element without a name, or whose name another one has.
bool Index::AddNew(const Place& place) {
    const auto name = GetPropertyValue(*place.element, Property::kName);
    const auto& others = place.element->IsName(tag::Platform) ? platforms_ : consoles_;
    if (!name || others.contains(*name)) {
        return false;
    }
    Add(place);
    return true;
}

void Index::Add(const Place& place) {
    const std::string_view name = PropertyOrEmpty(*place.element, Property::kName);
    (place.element->IsName(tag::Platform) ? platforms_ : consoles_)[name] = place;
    Count(place, 1);
}

void Index::Remove(const Place& place) {
    const std::string_view name = PropertyOrEmpty(*place.element, Property::kName);
    (place.element->IsName(tag::Platform) ? platforms_ : consoles_).erase(name);
    Count(place, -1);
}

void Index::Count(const Place& place, int by) {
    const RVT_Node& element = *place.element;
    names_[ToLower(PropertyOrEmpty(element, Property::kName))] += by;
    const auto port = GetPropertyValue(element, Property::kPort);
    if (place.platform != nullptr) {
        if (port) {
            ports_[{place.platform, "", *port}] += by;
        }
        return;
    }
    const auto address = GetPropertyValue(element, Property::kAddress);
    if (!address) {
        return;
    }
    addresses_[*address] += by;
    if (port) {
        ports_[{nullptr, *address, *port}] += by;
        CountPlatformAt(*address, element, by);
    }
}

void Index::CountPlatformAt(std::string_view address, const RVT_Node& element, int by) {
    if (!element.IsName(tag::Platform)) {
        return;
    }
    if (by > 0) {
        platforms_at_.emplace(address, &element);
        return;
    }
    const auto [first, last] = platforms_at_.equal_range(address);
    platforms_at_.erase(std::find_if(
        first, last, [&element](const auto& entry) { return entry.second == &element; }));
}

static Place LiveOrNone(const std::unordered_map<std::string_view, Place>& places,
                        std::string_view name) {
    const auto found = places.find(name);
    return found != places.end() && found->second.element->IsType(RVT_ELEMENT) ? found->second
                                                                               : Place();
}

RVT_Node* Index::FindPlatform(std::string_view name) const {
    return LiveOrNone(platforms_, name).element;
}

Place Index::FindConsole(std::string_view name) const {
    return LiveOrNone(consoles_, name);
}

int Index::CountName(std::string_view name) const {
    return At(names_, ToLower(name));
}

int Index::CountAddress(std::string_view address) const {
    return At(addresses_, address);
}

int Index::CountPort(std::string_view address, std::string_view port) const {
    int count = At(ports_, PortKey(nullptr, address, port));
    const auto [first, last] = platforms_at_.equal_range(address);
    for (auto at = first; at != last; ++at) {
        if (PropertyOrEmpty(*at->second, Property::kPort) != port) {
            count += At(ports_, PortKey(at->second, "", port));
        }
    }
    return count;
}
