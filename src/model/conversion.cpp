#include "model/conversion.h"

#include <array>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/uniqueness.h"
#include "model/validation.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

static Result<RVT_Node*> FindVersion() {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kIncompleteMap);
    }
    RVT_Node* version = FindAttribute(*map, version_tag);
    if (version == nullptr) {
        return Failure(ExitCode::kIncompleteMap,
                       "Cannot find the \"version\" attribute for SystemMap.");
    }
    return version;
}

Result<std::string_view> GetVersion() {
    const Result<RVT_Node*> version = FindVersion();
    if (!version.ok()) {
        return version.outcome();
    }
    return std::string_view((*version)->GetValue());
}

Outcome SetVersion(std::string_view version) {
    const Result<RVT_Node*> attribute = FindVersion();
    if (attribute.ok()) {
        (*attribute)->SetValue(version);
    }
    return attribute.outcome();
}

namespace {

// Which elements a step visits, in document order and each platform before its consoles.
enum class Visited { kLivePlatforms, kAllPlatforms, kAllPlatformsAndConsoles };

// Calls "visit" with each of them until it fails. kIncompleteMap when there is no root.
template <typename Visit>
Outcome ForEach(Visited which, Visit visit) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kIncompleteMap);
    }
    const auto platforms = which == Visited::kLivePlatforms ? LiveElements(*map, Platform)
                                                            : ElementsEvenDeleted(*map, Platform);
    for (RVT_Node& platform : platforms) {
        if (Outcome outcome = visit(platform); !outcome.ok()) {
            return outcome;
        }
        if (which != Visited::kAllPlatformsAndConsoles) {
            continue;
        }
        for (RVT_Node& console : ElementsEvenDeleted(platform, Console)) {
            if (Outcome outcome = visit(console); !outcome.ok()) {
                return outcome;
            }
        }
    }
    return Outcome();
}

// The live platforms at each address, in document order. One without an address is at none.
std::unordered_map<std::string_view, std::vector<RVT_Node*>> PlatformsByAddress(
    const RVT_Node& map) {
    std::unordered_map<std::string_view, std::vector<RVT_Node*>> platforms;
    for (RVT_Node& platform : LiveElements(map, Platform)) {
        if (const auto address = GetPropertyValue(platform, AddrProp)) {
            platforms[*address].push_back(&platform);
        }
    }
    return platforms;
}

Outcome MergePlatforms(const std::vector<RVT_Node*>& group) {
    RVT_Node& survivor = *group.front();
    const Result<std::string_view> survivor_id = ReadID(survivor);
    if (!survivor_id.ok()) {
        return survivor_id.outcome();
    }
    for (RVT_Node* merged : std::span(group).subspan(1)) {
        const Result<std::string_view> id = ReadID(*merged);
        if (!id.ok()) {
            return id.outcome();
        }
        UpdateIDsOfChildren(*merged, *id, *survivor_id);
        MoveConsolesToPlatform(*merged, survivor);
    }
    return {};
}

}  // namespace

Outcome GroupPlatformsWithDupIPAddr() {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kIncompleteMap);
    }
    const auto by_address = PlatformsByAddress(*map);
    return ForEach(Visited::kLivePlatforms, [&by_address](RVT_Node& platform) {
        const auto address = GetPropertyValue(platform, AddrProp);
        if (!address) {
            return Outcome();
        }
        const std::vector<RVT_Node*>& group = by_address.at(*address);
        return group.size() > 1 ? MergePlatforms(group) : Outcome();
    });
}

void MoveConsolesToPlatform(RVT_Node& from, RVT_Node& to) {
    const RVT_Node_List children = from.ReleaseChildren();
    RVT_Node_List_Elem* pos = nullptr;
    RVT_Node* child = children.GetFirstNode(pos);
    while (child != nullptr) {
        RVT_Node* next = RVT_Node_List::GetNextNode(pos);
        (child->IsType(RVT_ELEMENT) && child->IsName(Console) ? to : from).AddChild(child);
        child = next;
    }
    from.Delete();
}

Outcome ModifyDuplicatePlatformNames() {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kIncompleteMap);
    }
    NameIndex names(*map);
    return ForEach(Visited::kAllPlatforms, [&names](RVT_Node& platform) {
        RVT_Node* value = FindPropertyValue(platform, NameProp);
        if (value == nullptr) {
            return PropertyMissing(platform, NameProp);
        }
        const std::string_view name = value->GetValue();
        if (names.Count(name) != 1) {
            std::string unique = "P-" + std::string(name);
            while (names.Count(unique) != 0) {
                unique.insert(0, "P-");
            }
            names.Rename(name, unique);
            value->SetValue(unique);
        }
        return Outcome();
    });
}

// Adds the property "name" with "value" to each of the elements that lacks it. It has no type.
static Outcome AddWhereMissing(std::string_view name, std::string_view value, Visited owners) {
    return ForEach(owners, [name, value](const RVT_Node& owner) {
        RVT_Node* property_map = FindPropertyMap(owner);
        if (property_map == nullptr) {
            return PropertyMissing(owner, name);
        }
        if (FindProperty(*property_map, name) == nullptr) {
            SetAttributes(AddElement(*property_map, Property),
                          {{name_tag, name}, {readonly_tag, switch_off}, {value_tag, value}});
        }
        return Outcome();
    });
}

Outcome AddLoggingEnabledPropertyToPlatforms() {
    return AddWhereMissing(LoggingProp, switch_on, Visited::kAllPlatforms);
}
Outcome AddEventsEnabledPropertyToPlatforms() {
    return AddWhereMissing(EventsProp, switch_on, Visited::kAllPlatforms);
}
Outcome AddEnablePropertyToConsoles() {
    return AddWhereMissing(EnableProp, switch_on, Visited::kAllPlatformsAndConsoles);
}
Outcome AddEventFilePropertyToConsoles() {
    return AddWhereMissing(EventFileProp, DefaultEventFile, Visited::kAllPlatformsAndConsoles);
}
Outcome AddMappedPortPropertyToConsoles() {
    return AddWhereMissing(MappedPortProp, "0", Visited::kAllPlatformsAndConsoles);
}
Outcome AddAuthEnabledPropertyToConsoles() {
    return AddWhereMissing(AuthProp, switch_on, Visited::kAllPlatformsAndConsoles);
}
Outcome AddFirstTSPortPropertyToPlatforms() {
    return AddWhereMissing(FTSPProp, "2001", Visited::kAllPlatforms);
}
Outcome AddLastTSPortPropertyToPlatforms() {
    return AddWhereMissing(LTSPProp, "2008", Visited::kAllPlatforms);
}

// Replaces the value of a property by "Unknown" unless it is listed; a missing one stays missing.
static void AssignUnknown(const RVT_Node& owner, std::string_view property,
                          bool (*is_listed)(std::string_view)) {
    RVT_Node* value = FindPropertyValue(owner, property);
    if (value != nullptr && !is_listed(value->GetValue())) {
        value->SetValue(unknown_value);
    }
}

Outcome ValidateAndAssignGenericModel() {
    return ForEach(Visited::kLivePlatforms, [](const RVT_Node& platform) {
        AssignUnknown(platform, ModelProp, IsModelNumberInDatabase);
        return Outcome();
    });
}

Outcome CheckAndAssignTypePropertyToConsoles() {
    return ForEach(Visited::kLivePlatforms, [](const RVT_Node& platform) {
        for (const RVT_Node& console : LiveElements(platform, Console)) {
            AssignUnknown(console, TypeProp, IsOSTypeInDatabase);
        }
        return Outcome();
    });
}

Outcome DeleteConnPropertyFromPlatform() {
    return ForEach(Visited::kLivePlatforms, [](const RVT_Node& platform) {
        for (const RVT_Node& property_map : LiveElements(platform, PropertyMap)) {
            for (RVT_Node& property : LiveElements(property_map, Property)) {
                const RVT_Node* name = FindAttribute(property, name_tag);
                if (name != nullptr && name->IsValue(ConnProp)) {
                    property.Delete();
                }
            }
        }
        return Outcome();
    });
}

static Outcome ConvertTree() {
    static constexpr std::array<Outcome (*)(), 14> kSteps = {
        GroupPlatformsWithDupIPAddr,
        ModifyDuplicatePlatformNames,
        AddLoggingEnabledPropertyToPlatforms,
        AddEventsEnabledPropertyToPlatforms,
        AddEnablePropertyToConsoles,
        AddEventFilePropertyToConsoles,
        AddMappedPortPropertyToConsoles,
        AddAuthEnabledPropertyToConsoles,
        ValidateAndAssignGenericModel,
        DeleteConnPropertyFromPlatform,
        [] { return SetVersion(systemmap_version); },
        AddFirstTSPortPropertyToPlatforms,
        AddLastTSPortPropertyToPlatforms,
        CheckAndAssignTypePropertyToConsoles,
    };
    for (Outcome (*step)() : kSteps) {
        if (Outcome outcome = step(); !outcome.ok()) {
            return outcome;
        }
    }
    return Outcome();
}

Result<bool> DoVersionConversion() {
    const Result<std::string_view> version = GetVersion();
    if (version.ok() && *version == systemmap_version) {
        return false;
    }
    if (Outcome outcome = ConvertTree(); !outcome.ok()) {
        return outcome;
    }
    return true;
}
