#include "model/index.h"

#include "base/text.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

std::optional<Index> Index::Of(const RVT_Node& map) {
    Index index;
    for (RVT_Node& node : LiveElements(map, tag::Platform, tag::Console)) {
        bool is_regular = index.AddNew({&node});
        for (RVT_Node& console : LiveElements(node, tag::Console)) {
            is_regular =
                is_regular && (!node.IsName(tag::Platform) || index.AddNew({&console, &node}));
        }
        if (!is_regular) {
            return std::nullopt;
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
        ports_[{place.platform, *port}] += by;
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
    ports_[{&site, *port}] += by;
    if (element.IsName(tag::Platform)) {
        std::erase(site.platforms, &element);
        site.platforms.resize(site.platforms.size() + (by > 0 ? 1 : 0), &element);
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

int Index::UsesOf(const void* owner, std::string_view port) const {
    const auto found = ports_.find({owner, port});
    return found == ports_.end() ? 0 : found->second;
}

int Index::CountPort(std::string_view address, std::string_view port) const {
    const auto site = sites_.find(address);
    if (site == sites_.end()) {
        return 0;
    }
    int count = UsesOf(&site->second, port);
    for (const RVT_Node* platform : site->second.platforms) {
        const bool has_it_itself = PropertyOrEmpty(*platform, Property::kPort) == port;
        count += has_it_itself ? 0 : UsesOf(platform, port);
    }
    return count;
}
