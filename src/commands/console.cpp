#include "commands/console.h"

#include <array>

#include "commands/change.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

using enum Property;

namespace {

// The platform of a new console lends it its address.
Outcome HasParent(Change& change) {
    const std::string& name = change.command.platform;
    if (name.empty()) {
        return change.inventory.NeedSystemMap(ExitCode::kLookupFailed).outcome();
    }
    const Result<RVT_Node*> platform = change.inventory.FindPlatform(name);
    if (!platform.ok()) {
        return platform.outcome();
    }
    change.place.platform = *platform;
    const auto address = GetPropertyValue(**platform, kAddress);
    if (address && !address->empty()) {
        change.values[kAddress] = *address;
    }
    return address ? Outcome() : PropertyMissing(**platform, kAddress);
}

Outcome PortIsFree(Change& change) {
    return CheckPortIsFree(change.inventory, change[kAddress], change[kPort]);
}

constexpr auto kAdditionChecks = std::to_array<AdditionCheck>({
    {.form = ValueKind::kName},
    {.whole = NameIsFree},
    {.form = ValueKind::kAddress},
    {.form = ValueKind::kPort},
    {.form = ValueKind::kType},
    {.whole = HasParent},
    {.whole = PortIsFree},
    {.form = ValueKind::kEventFile},
    {.whole = EventsHaveLogging},
});

// What stands before the port in a new console's identifier: its platform's identifier, or a number
// of its own. Nothing can fail after this.
Result<std::string> TakeOwnerID(const Place& place, const Inventory& inventory) {
    if (place.platform == nullptr) {
        return TakeSerial(*inventory.FindSystemMap());
    }
    const Result<std::string_view> id = ReadID(*place.platform);
    return id.ok() ? Result(std::string(*id)) : id.outcome();
}

// Whether the console's port is its own at its address. At its platform's address the count finds
// the console itself, unless the platform has that port: it may then keep the port but not take it.
// At another address the count cannot find a console that is inside a platform.
Outcome PortStaysUnique(Change& change) {
    const auto& [console, platform] = change.place;
    const bool is_inside = platform != nullptr;
    const std::string_view lent = is_inside ? PropertyOrEmpty(*platform, kAddress) : "";
    const bool uses_own = lent.empty() || NewValue(change.command.settings, kAddress) != nullptr;
    const std::string_view address = uses_own ? change[kAddress] : lent;
    const std::string_view port = change[kPort];
    for (const Property needed : {uses_own ? kAddress : kPort, kPort}) {
        if (!change.values.Has(needed)) {
            return PropertyMissing(*console, needed);
        }
    }
    const bool is_seen = !is_inside || lent == address;
    const bool takes_platform_port = is_seen && is_inside && port != change.port_before &&
                                     PropertyOrEmpty(*platform, kPort) == port;
    const int expected = is_seen ? 1 : 0;
    return takes_platform_port ||
                   change.inventory.GetCountOfConsolesWithAddress(address, port) != expected
               ? PortTaken(port)
               : Outcome();
}

// Not a check: the identifiers follow the port once all checks have passed.
Outcome RewriteIdentifiers(Change& change) {
    return HandleConsolePortChange(*change.place.element, std::string(change.port_before),
                                   change[kPort]);
}

constexpr auto kValueChecks = std::to_array<ValueCheck>({{kName, NameIsFree}});

constexpr auto kWholeChecks = std::to_array<WholeCheck>({
    {kLogging, kEvents, EventsHaveLogging},
    {kAddress, kPort, PortStaysUnique},
    {kPort, kPort, RewriteIdentifiers},
});

}  // namespace

Outcome AddConsole(const Command& command, Inventory& inventory) {
    Change addition = Addition(command, inventory, Owner::kConsole);
    if (Outcome outcome = CheckAddition(addition, kAdditionChecks); !outcome.ok()) {
        return outcome;
    }
    const Result<std::string> owner_id = TakeOwnerID(addition.place, inventory);
    if (owner_id.ok()) {
        inventory.Add(addition.place.platform, Owner::kConsole,
                      ConsoleID(*owner_id, addition[kPort]), addition.values);
    }
    return owner_id.outcome();
}

Outcome UpdateConsole(const Command& command, Inventory& inventory) {
    const Result<Place> place = inventory.FindConsole(command.name);
    if (!place.ok()) {
        return place.outcome();
    }
    const RVT_Node& addressed = place->platform == nullptr ? *place->element : *place->platform;
    if (!GetPropertyValue(addressed, kAddress)) {
        return PropertyMissing(addressed, kAddress);
    }
    Change update = Update(command, inventory, Owner::kConsole, *place);
    return ApplyUpdate(update, kValueChecks, kWholeChecks);
}

Outcome HandleConsolePortChange(const RVT_Node& console, const std::string& old_port,
                                std::string_view new_port) {
    RVT_Node* attribute = FindAttribute(console, kIDId);
    if (attribute == nullptr) {
        return Failure(ExitCode::kIncompleteMap, "Console with port %s has no ID attribute.",
                       old_port.c_str());
    }
    const std::string old_id = attribute->GetValue();
    if (!EndsInPort(old_id, old_port)) {
        return Failure(ExitCode::kIncompleteMap, "Console with port %s has bad ID attribute.",
                       old_port.c_str());
    }
    const std::string new_id = ConsoleID(old_id.substr(0, old_id.find(':')), new_port);
    attribute->SetValue(new_id);
    UpdateIDsOfChildren(console, old_id, new_id);
    return {};
}

Outcome RemoveConsole(const Command& command, Inventory& inventory) {
    const Result<Place> place = inventory.FindConsole(command.name);
    if (place.ok()) {
        inventory.Remove(*place->element, place->platform);
    }
    return place.outcome();
}
