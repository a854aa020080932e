#include "model/conversion.h"

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

std::string_view GetVersion(const RVT_Node& map) {
    const RVT_Node* version = FindAttribute(map, version_tag);
    return version == nullptr ? "" : version->GetValue();
}

Outcome SetVersion(const RVT_Node& map, std::string_view version) {
    const Result<RVT_Node*> attribute = FindMapAttribute(map, version_tag);
    if (attribute.ok()) {
        (*attribute)->SetValue(version);
    }
    return attribute.outcome();
}

// The live platforms at each address, in document order. One without an address is at none.
using PlatformsByAddress = std::unordered_map<std::string_view, std::vector<RVT_Node*>>;

static PlatformsByAddress GroupByAddress(const RVT_Node& map) {
    PlatformsByAddress platforms;
    for (RVT_Node& platform : LiveElements(map, tag::Platform)) {
        if (const auto address = GetPropertyValue(platform, Property::kAddress)) {
            platforms[*address].push_back(&platform);
        }
    }
    return platforms;
}

static Outcome MergePlatforms(std::span<RVT_Node* const> group) {
    RVT_Node& survivor = *group.front();
    const Result<std::string_view> survivor_id = ReadID(survivor);
    if (!survivor_id.ok()) {
        return survivor_id.outcome();
    }
    for (RVT_Node* merged : group.subspan(1)) {
        const Result<std::string_view> id = ReadID(*merged);
        if (!id.ok()) {
            return id.outcome();
        }
        UpdateIDsOfChildren(*merged, *id, *survivor_id);
        MoveConsolesToPlatform(*merged, survivor);
    }
    return {};
}

Outcome GroupPlatformsWithDupIPAddr(const RVT_Node& map) {
    const PlatformsByAddress by_address = GroupByAddress(map);
    for (const RVT_Node& platform : LiveElements(map, tag::Platform)) {
        const auto group = by_address.find(PropertyOrEmpty(platform, Property::kAddress));
        if (group == by_address.end() || group->second.size() == 1 ||
            group->second.front() != &platform) {
            continue;
        }
        if (Outcome outcome = MergePlatforms(group->second); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

void MoveConsolesToPlatform(RVT_Node& from, RVT_Node& to) {
    ShareOutChildren(from, [&](const RVT_Node& child) {
        return child.IsType(RVT_ELEMENT) && child.IsName(tag::Console) ? &to : &from;
    });
    from.Delete();
}

Outcome ModifyDuplicatePlatformNames(const RVT_Node& map) {
    NameIndex names(map);
    for (const RVT_Node& platform : ElementsEvenDeleted(map, tag::Platform)) {
        RVT_Node* value = FindPropertyValue(platform, Property::kName);
        if (value == nullptr) {
            return PropertyMissing(platform, Property::kName);
        }
        const std::string_view name = value->GetValue();
        if (names.Count(name) != 1) {
            value->SetValue(names.Rename(name));
        }
    }
    return {};
}

// Whether an older map may lack a property of an element.
static bool MayLack(Owner owner, bool is_standalone, const PropertyRow& row) {
    return (row.converted == Converted::kOwners && Has(owner, row.property)) ||
           (row.converted == Converted::kPlatformsAndTheirConsoles && !is_standalone) ||
           (row.converted == Converted::kPlatforms && owner == Owner::kPlatform);
}

static Outcome AddMissing(const RVT_Node& element, Owner owner, bool is_standalone = false) {
    RVT_Node* property_map = FindPropertyMap(element);
    for (const PropertyRow& row : kPropertyTable) {
        if (!MayLack(owner, is_standalone, row)) {
            continue;
        }
        if (property_map == nullptr) {
            return PropertyMissing(element, Property::kName);
        }
        if (FindProperty(*property_map, row.name) == nullptr) {
            AddProperty(*property_map, row.property, *row.initial);
        }
    }
    return {};
}

Outcome AddMissingProperties(const RVT_Node& map) {
    for (const RVT_Node& platform : ElementsEvenDeleted(map, tag::Platform)) {
        if (Outcome outcome = AddMissing(platform, Owner::kPlatform); !outcome.ok()) {
            return outcome;
        }
    }
    for (const RVT_Node& platform : ElementsEvenDeleted(map, tag::Platform)) {
        for (const RVT_Node& console : ElementsEvenDeleted(platform, tag::Console)) {
            if (Outcome outcome = AddMissing(console, Owner::kConsole); !outcome.ok()) {
                return outcome;
            }
        }
    }
    for (const RVT_Node& console : LiveElements(map, tag::Console)) {
        if (Outcome outcome = AddMissing(console, Owner::kConsole, true); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

// Replaces the value of a property by "Unknown" unless it is listed; a missing one stays missing.
static void AssignUnknown(const RVT_Node& element, Property property,
                          bool (ReferenceFiles::*is_listed)(std::string_view),
                          ReferenceFiles& files) {
    RVT_Node* value = FindPropertyValue(element, property);
    if (value != nullptr && !(files.*is_listed)(value->GetValue())) {
        value->SetValue(unknown_value);
    }
}

void ValidateAndAssignGenericModel(const RVT_Node& map) {
    ReferenceFiles files;
    for (const RVT_Node& platform : LiveElements(map, tag::Platform)) {
        AssignUnknown(platform, Property::kModel, &ReferenceFiles::IsModelNumberInDatabase, files);
    }
}

void CheckAndAssignTypePropertyToConsoles(const RVT_Node& map) {
    ReferenceFiles files;
    for (const RVT_Node& platform : LiveElements(map, tag::Platform)) {
        for (const RVT_Node& console : LiveElements(platform, tag::Console)) {
            AssignUnknown(console, Property::kType, &ReferenceFiles::IsOSTypeInDatabase, files);
        }
    }
}

static void DeleteConn(const RVT_Node& property_map) {
    for (RVT_Node& property : LiveElements(property_map, tag::Property)) {
        const RVT_Node* name = FindAttribute(property, kNameId);
        if (name != nullptr && name->IsValue("Conn")) {
            property.Delete();
        }
    }
}

void DeleteConnPropertyFromPlatform(const RVT_Node& map) {
    for (const RVT_Node& platform : LiveElements(map, tag::Platform)) {
        for (const RVT_Node& property_map : LiveElements(platform, tag::PropertyMap)) {
            DeleteConn(property_map);
        }
    }
}

static Outcome ConvertMap(const RVT_Node& map) {
    for (Outcome (*step)(const RVT_Node&) :
         {GroupPlatformsWithDupIPAddr, ModifyDuplicatePlatformNames, AddMissingProperties}) {
        if (Outcome outcome = step(map); !outcome.ok()) {
            return outcome;
        }
    }
    ValidateAndAssignGenericModel(map);
    DeleteConnPropertyFromPlatform(map);
    if (Outcome outcome = SetVersion(map, systemmap_version); !outcome.ok()) {
        return outcome;
    }
    CheckAndAssignTypePropertyToConsoles(map);
    return {};
}

Result<bool> DoVersionConversion(Inventory& inventory) {
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    if (GetVersion(**map) == systemmap_version) {
        return false;
    }
    Outcome outcome = ConvertMap(**map);
    return outcome.ok() ? Result(true) : outcome;
}
