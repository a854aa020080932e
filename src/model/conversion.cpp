#include "model/conversion.h"

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/error.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/uniqueness.h"
#include "model/validation.h"
#include "model/vocabulary.h"
#include "run/rvt_exit.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

static ExitCode FindVersion(RVT_Node*& version) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return ExitCode::kIncompleteMap;
    }
    version = FindAttribute(*map, version_tag);
    return version != nullptr ? ExitCode::kOk
                              : Fail(ExitCode::kIncompleteMap,
                                     "Cannot find the \"version\" attribute for SystemMap.");
}

ExitCode GetVersion(std::string_view& version) {
    RVT_Node* attribute = nullptr;
    const ExitCode code = FindVersion(attribute);
    if (code == ExitCode::kOk) {
        version = attribute->GetValue();
    }
    return code;
}

ExitCode SetVersion(std::string_view version) {
    RVT_Node* attribute = nullptr;
    const ExitCode code = FindVersion(attribute);
    if (code == ExitCode::kOk) {
        attribute->SetValue(version);
    }
    return code;
}

namespace {

// Which elements a step visits, in document order and each platform before its consoles.
enum class Visited { kLivePlatforms, kAllPlatforms, kAllPlatformsAndConsoles };

// Calls "visit" with each of them until it fails. kIncompleteMap when there is no root.
template <typename Visit>
ExitCode ForEach(Visited which, Visit visit) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return ExitCode::kIncompleteMap;
    }
    const auto platforms = which == Visited::kLivePlatforms ? LiveElements(*map, Platform)
                                                            : ElementsEvenDeleted(*map, Platform);
    for (RVT_Node& platform : platforms) {
        if (const ExitCode code = visit(platform); code != ExitCode::kOk) {
            return code;
        }
        if (which != Visited::kAllPlatformsAndConsoles) {
            continue;
        }
        for (RVT_Node& console : ElementsEvenDeleted(platform, Console)) {
            if (const ExitCode code = visit(console); code != ExitCode::kOk) {
                return code;
            }
        }
    }
    return ExitCode::kOk;
}

// The live platforms at each address, in document order. One without an address is at none.
std::unordered_map<std::string_view, std::vector<RVT_Node*>> PlatformsByAddress(
    const RVT_Node& map) {
    std::unordered_map<std::string_view, std::vector<RVT_Node*>> platforms;
    for (RVT_Node& platform : LiveElements(map, Platform)) {
        std::string_view address;
        if (GetPropertyValue(platform, AddrProp, address) == ExitCode::kOk) {
            platforms[address].push_back(&platform);
        }
    }
    return platforms;
}

ExitCode MergePlatforms(const std::vector<RVT_Node*>& group) {
    RVT_Node& survivor = *group.front();
    std::string survivor_id;
    if (const ExitCode code = ReadID(survivor, survivor_id); code != ExitCode::kOk) {
        return code;
    }
    for (size_t i = 1; i < group.size(); ++i) {
        std::string id;
        if (const ExitCode code = ReadID(*group[i], id); code != ExitCode::kOk) {
            return code;
        }
        UpdateIDsOfChildren(*group[i], id, survivor_id);
        MoveConsolesToPlatform(*group[i], survivor);
    }
    return ExitCode::kOk;
}

}  // namespace

ExitCode GroupPlatformsWithDupIPAddr() {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return ExitCode::kIncompleteMap;
    }
    const auto by_address = PlatformsByAddress(*map);
    return ForEach(Visited::kLivePlatforms, [&by_address](RVT_Node& platform) {
        std::string_view address;
        if (GetPropertyValue(platform, AddrProp, address) != ExitCode::kOk) {
            return ExitCode::kOk;
        }
        const std::vector<RVT_Node*>& group = by_address.at(address);
        return group.size() > 1 ? MergePlatforms(group) : ExitCode::kOk;
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

ExitCode ModifyDuplicatePlatformNames() {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return ExitCode::kIncompleteMap;
    }
    NameIndex names(*map);
    return ForEach(Visited::kAllPlatforms, [&names](RVT_Node& platform) {
        RVT_Node* value = FindPropertyValue(platform, NameProp);
        if (value == nullptr) {
            return ExitCode::kLookupFailed;
        }
        const std::string_view name = value->GetValue();
        if (names.Count(name) != 1) {
            value->SetValue(names.Rename(name));
        }
        return ExitCode::kOk;
    });
}

// Adds the property "name" with "value" to each of the elements that lacks it. It has no type.
static ExitCode AddWhereMissing(std::string_view name, std::string_view value, Visited owners) {
    return ForEach(owners, [name, value](const RVT_Node& owner) {
        RVT_Node* property_map = FindPropertyMap(owner);
        if (property_map == nullptr) {
            return ExitCode::kLookupFailed;
        }
        if (FindProperty(*property_map, name) == nullptr) {
            SetAttributes(AddElement(*property_map, Property),
                          {{name_tag, name}, {readonly_tag, switch_off}, {value_tag, value}});
        }
        return ExitCode::kOk;
    });
}

ExitCode AddLoggingEnabledPropertyToPlatforms() {
    return AddWhereMissing(LoggingProp, switch_on, Visited::kAllPlatforms);
}
ExitCode AddEventsEnabledPropertyToPlatforms() {
    return AddWhereMissing(EventsProp, switch_on, Visited::kAllPlatforms);
}
ExitCode AddEnablePropertyToConsoles() {
    return AddWhereMissing(EnableProp, switch_on, Visited::kAllPlatformsAndConsoles);
}
ExitCode AddEventFilePropertyToConsoles() {
    return AddWhereMissing(EventFileProp, DefaultEventFile, Visited::kAllPlatformsAndConsoles);
}
ExitCode AddMappedPortPropertyToConsoles() {
    return AddWhereMissing(MappedPortProp, "0", Visited::kAllPlatformsAndConsoles);
}
ExitCode AddAuthEnabledPropertyToConsoles() {
    return AddWhereMissing(AuthProp, switch_on, Visited::kAllPlatformsAndConsoles);
}
ExitCode AddFirstTSPortPropertyToPlatforms() {
    return AddWhereMissing(FTSPProp, "2001", Visited::kAllPlatforms);
}
ExitCode AddLastTSPortPropertyToPlatforms() {
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

ExitCode ValidateAndAssignGenericModel() {
    return ForEach(Visited::kLivePlatforms, [](const RVT_Node& platform) {
        AssignUnknown(platform, ModelProp, IsModelNumberInDatabase);
        return ExitCode::kOk;
    });
}

ExitCode CheckAndAssignTypePropertyToConsoles() {
    return ForEach(Visited::kLivePlatforms, [](const RVT_Node& platform) {
        for (const RVT_Node& console : LiveElements(platform, Console)) {
            AssignUnknown(console, TypeProp, IsOSTypeInDatabase);
        }
        return ExitCode::kOk;
    });
}

ExitCode DeleteConnPropertyFromPlatform() {
    return ForEach(Visited::kLivePlatforms, [](const RVT_Node& platform) {
        for (const RVT_Node& property_map : LiveElements(platform, PropertyMap)) {
            for (RVT_Node& property : LiveElements(property_map, Property)) {
                const RVT_Node* name = AttributeOf(property, name_tag);
                if (name != nullptr && name->IsValue(ConnProp)) {
                    property.Delete();
                }
            }
        }
        return ExitCode::kOk;
    });
}

static ExitCode ConvertTree() {
    static constexpr std::array<ExitCode (*)(), 14> kSteps = {
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
    for (ExitCode (*step)() : kSteps) {
        if (const ExitCode code = step(); code != ExitCode::kOk) {
            return code;
        }
    }
    return ExitCode::kOk;
}

void DoVersionConversion(const char* path) {
    std::string_view version;
    static_cast<void>(GetVersion(version));
    if (version == systemmap_version) {
        return;
    }
    ExitCode code = ConvertTree();
    if (code == ExitCode::kOk) {
        code = WriteXMLFile(path, &rvt_xml_tree);
    }
    if (code != ExitCode::kOk) {
        RVTExit(code);
    }
}
