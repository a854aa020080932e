#include "model/index.h"

#include "base/text.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

// Keys of what is counted. A port is counted below the address of a platform or standalone console,
// and below its platform for a console inside one. No text of the map holds a zero byte.
static std::string NameKey(std::string_view name) {
    return ToLower(name);
}
static std::string AddressKey(std::string_view address) {
    return std::string(1, '\0').append(address);
}
static std::string PortKey(std::string_view address, std::string_view port) {
    return AddressKey(address).append(1, '\0').append(port);
}
static std::string PortKey(const RVT_Node* platform, std::string_view port) {
    return PortKey(std::to_string(reinterpret_cast<uintptr_t>(platform)), port).append(1, '\0');
}

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
    counts_[NameKey(PropertyOrEmpty(element, Property::kName))] += by;
    const auto address = GetPropertyValue(element, Property::kAddress);
    const auto port = GetPropertyValue(element, Property::kPort);
    if (place.platform != nullptr && port) {
        counts_[PortKey(place.platform, *port)] += by;
    }
    if (place.platform != nullptr || !address) {
        return;
    }
    counts_[AddressKey(*address)] += by;
    if (!port) {
        return;
    }
    counts_[PortKey(*address, *port)] += by;
    if (element.IsName(tag::Platform)) {
        std::vector<const RVT_Node*>& platforms = platforms_at_[*address];
        std::erase(platforms, &element);
        platforms.resize(platforms.size() + (by > 0 ? 1 : 0), &element);
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

int Index::At(const std::string& key) const {
    const auto found = counts_.find(key);
    return found == counts_.end() ? 0 : found->second;
}

int Index::CountName(std::string_view name) const {
    return At(NameKey(name));
}

int Index::CountAddress(std::string_view address) const {
    return At(AddressKey(address));
}

int Index::CountPort(std::string_view address, std::string_view port) const {
    int count = At(PortKey(address, port));
    const auto platforms = platforms_at_.find(address);
    if (platforms == platforms_at_.end()) {
        return count;
    }
    for (const RVT_Node* platform : platforms->second) {
        const bool has_it_itself = PropertyOrEmpty(*platform, Property::kPort) == port;
        count += has_it_itself ? 0 : At(PortKey(platform, port));
    }
    return count;
}
