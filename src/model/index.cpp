#include "model/index.h"

#include <new>

#include "base/arena.h"
#include "base/text.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

Index* Index::Of(const RVT_Node& map) {
    auto* index = new (arena::Allocate(sizeof(Index))) Index;
    for (RVT_Node& node : LiveElements(map, tag::Platform, tag::Console)) {
        bool is_regular = index->AddNew({&node});
        for (RVT_Node& console : LiveElements(node, tag::Console)) {
            is_regular =
                is_regular && (!node.IsName(tag::Platform) || index->AddNew({&console, &node}));
        }
        if (!is_regular) {
            return nullptr;
        }
    }
    return index;
}

// False for an element without a name, or whose name another one has.
bool Index::AddNew(const Place& place) {
    const auto name = GetPropertyValue(*place.element, Property::kName);
    const auto& others = place.element->IsName(tag::Platform) ? platforms_ : consoles_;
    const bool is_new = name && !others.contains(*name);
    if (is_new) {
        Add(place);
    }
    return is_new;
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
    if (place.platform == nullptr) {
        CountAtSite(element, by);
    } else if (const auto port = GetPropertyValue(element, Property::kPort); port) {
        Inside& inside = inside_[place.platform];
        inside.ports[*port] += by;
        if (inside.site != nullptr && inside.own_port != *port) {
            inside.site->ports[*port] += by;
        }
    }
}

void Index::CountAtSite(const RVT_Node& element, int by) {
    const auto address = GetPropertyValue(element, Property::kAddress);
    const auto port = GetPropertyValue(element, Property::kPort);
    if (!address) {
        return;
    }
    Site& site = sites_[*address];
    site.count += by;
    if (!port) {
        return;
    }
    site.ports[*port] += by;
    if (element.IsName(tag::Platform)) {
        CountInside(inside_[&element], site, *port, by);
    }
}

void Index::CountInside(Inside& inside, Site& site, std::string_view own_port, int by) {
    inside.site = by > 0 ? &site : nullptr;
    inside.own_port = own_port;
    for (const auto& [port, count] : inside.ports) {
        if (port != own_port) {
            site.ports[port] += by * count;
        }
    }
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
    const auto found = names_.find(ToLower(name));
    return found == names_.end() ? 0 : found->second;
}

int Index::CountAddress(std::string_view address) const {
    const auto site = sites_.find(address);
    return site == sites_.end() ? 0 : site->second.count;
}

int Index::CountPort(std::string_view address, std::string_view port) const {
    const auto site = sites_.find(address);
    if (site == sites_.end()) {
        return 0;
    }
    const auto found = site->second.ports.find(port);
    return found == site->second.ports.end() ? 0 : found->second;
}
