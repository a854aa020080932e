#include "commands/platform.h"

#include <array>

#include "commands/addition.h"
#include "commands/update.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"

namespace {

Outcome PortsAreARange(Addition& addition) {
    return CheckPortRange(addition.values[Property::kFirstTsPort],
                          addition.values[Property::kLastTsPort]);
}

Outcome AddressIsFree(Addition& addition) {
    return CheckAddressIsFree(addition.inventory, nullptr, addition.values[Property::kAddress]);
}

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

Outcome NewAddressIsFree(const Update& update, std::string_view value) {
    return CheckAddressIsFree(update.inventory, update.place.element, value);
}

// A port that changes may not be in use at the platform's address, as it stands by then.
Outcome NewPortIsFree(const Update& update, std::string_view value) {
    const RVT_Node& platform = *update.place.element;
    if (PropertyOrEmpty(platform, Property::kPort) == value) {
        return {};
    }
    const auto address = GetPropertyValue(platform, Property::kAddress);
    return address ? CheckPortIsFree(update.inventory, *address, value)
                   : PropertyMissing(platform, Property::kAddress);
}

constexpr auto kValueChecks = std::to_array<ValueCheck>({
    {Property::kName, NewNameIsFree},
    {Property::kAddress, NewAddressIsFree},
    {Property::kPort, NewPortIsFree},
});

Outcome NewPortsAreARange(const Update& update) {
    return CheckPortRange(PropertyOrEmpty(*update.place.element, Property::kFirstTsPort),
                          PropertyOrEmpty(*update.place.element, Property::kLastTsPort));
}

constexpr auto kWholeChecks = std::to_array<WholeCheck>({
    {Property::kLogging, Property::kEvents, EventsHaveLogging},
    {Property::kFirstTsPort, Property::kLastTsPort, NewPortsAreARange},
});

Result<RVT_Node*> FindNamed(const Command& command, const Inventory& inventory) {
    const Result<RVT_Node*> platform = inventory.FindPlatform(command.name);
    if (!platform.ok()) {
        return Failure(ExitCode::kLookupFailed, "Platform \"%s\" not found.", command.name.c_str());
    }
    return platform;
}

}  // namespace

Outcome AddPlatform(const Command& command, Inventory& inventory) {
    Addition addition(command, inventory, Owner::kPlatform);
    if (Outcome outcome = Check(addition, kAdditionChecks); !outcome.ok()) {
        return outcome;
    }
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    Result<Serial> serial = Serial::Read(**map);
    if (serial.ok()) {
        inventory.Add(**map, Owner::kPlatform, serial->Take(), addition.values);
    }
    return serial.outcome();
}

Outcome UpdatePlatform(const Command& command, Inventory& inventory) {
    const Result<RVT_Node*> platform = FindNamed(command, inventory);
    if (!platform.ok()) {
        return platform.outcome();
    }
    const Update update = {command, inventory, Owner::kPlatform, {*platform}};
    return Apply(update, kValueChecks, kWholeChecks);
}

Outcome RemovePlatform(const Command& command, Inventory& inventory) {
    const Result<RVT_Node*> platform = FindNamed(command, inventory);
    if (platform.ok()) {
        inventory.Remove(*inventory.FindSystemMap(), **platform);
    }
    return platform.outcome();
}
