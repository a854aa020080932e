#include "commands/platform.h"

#include <array>

#include "commands/change.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"

using enum Property;

namespace {

constexpr auto kAdditionChecks = std::to_array<AdditionCheck>({
    {.whole = NameIsFree},
    {.form = ValueKind::kName},
    {.form = ValueKind::kModel},
    {.form = ValueKind::kPort},
    {.form = ValueKind::kTsPort},
    {.whole = PortsAreARange},
    {.form = ValueKind::kAddress},
    {.form = ValueKind::kEventFile},
    {.whole = AddressIsFree},
});

// A port that changes may not be in use at the platform's address, as it stands by then.
Outcome PortIsFree(Change& change) {
    const RVT_Node& platform = *change.place.element;
    if (PropertyOrEmpty(platform, kPort) == change[kPort]) {
        return {};
    }
    return change.values.Has(kAddress)
               ? CheckPortIsFree(change.inventory, change[kAddress], change[kPort])
               : PropertyMissing(platform, kAddress);
}

constexpr auto kValueChecks = std::to_array<ValueCheck>({
    {kName, NameIsFree},
    {kAddress, AddressIsFree},
    {kPort, PortIsFree},
});

constexpr auto kWholeChecks = std::to_array<WholeCheck>({
    {kLogging, kEvents, EventsHaveLogging},
    {kFirstTsPort, kLastTsPort, PortsAreARange},
});

Result<RVT_Node*> FindNamed(const Command& command, const Inventory& inventory) {
    const Result<RVT_Node*> platform = inventory.FindPlatform(command.name);
    return platform.ok() ? platform
                         : Failure(ExitCode::kLookupFailed, "Platform \"%s\" not found.",
                                   command.name.c_str());
}

}  // namespace

Outcome AddPlatform(const Command& command, Inventory& inventory) {
    Change addition = Addition(command, inventory, Owner::kPlatform);
    if (Outcome outcome = CheckAddition(addition, kAdditionChecks); !outcome.ok()) {
        return outcome;
    }
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    const Result<std::string> id = TakeSerial(**map);
    if (id.ok()) {
        inventory.Add(nullptr, Owner::kPlatform, *id, addition.values);
    }
    return id.outcome();
}

Outcome UpdatePlatform(const Command& command, Inventory& inventory) {
    const Result<RVT_Node*> platform = FindNamed(command, inventory);
    if (!platform.ok()) {
        return platform.outcome();
    }
    Change update = Update(command, inventory, Owner::kPlatform, {*platform});
    return ApplyUpdate(update, kValueChecks, kWholeChecks);
}

Outcome RemovePlatform(const Command& command, Inventory& inventory) {
    const Result<RVT_Node*> platform = FindNamed(command, inventory);
    if (platform.ok()) {
        inventory.Remove(**platform, nullptr);
    }
    return platform.outcome();
}
