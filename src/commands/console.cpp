#include "commands/console.h"

#include <array>

#include "commands/addition.h"
#include "commands/update.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

namespace {

// The parent of a new console; a platform lends it its address.
Outcome HasParent(Addition& addition) {
    const std::string& name = addition.command.platform;
    const Result<RVT_Node*> parent = name.empty()
                                         ? addition.inventory.NeedSystemMap(ExitCode::kLookupFailed)
                                         : addition.inventory.FindPlatform(name);
    if (!parent.ok()) {
        return parent.outcome();
    }
    addition.parent = *parent;
    if (name.empty()) {
        return {};
    }
    const auto address = GetPropertyValue(**parent, Property::kAddress);
    if (!address) {
        return PropertyMissing(**parent, Property::kAddress);
    }
    addition.values[Property::kAddress] = *address;
    return {};
}

Outcome PortIsFree(Addition& addition) {
    return CheckPortIsFree(addition.inventory, addition.values[Property::kAddress],
                           addition.values[Property::kPort]);
}

Outcome NewEventsHaveLogging(Addition& addition) {
    return CheckEventsHaveLogging(addition.values[Property::kLogging],
                                  addition.values[Property::kEvents]);
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
    {.whole = NewEventsHaveLogging},
});

// What stands before the port in a new console's identifier: its platform's identifier, or a number
// of its own. Nothing can fail after this.
Result<std::string> TakeOwnerID(const RVT_Node& parent) {
    if (parent.IsName(tag::Platform)) {
        const Result<std::string_view> id = ReadID(parent);
        return id.ok() ? Result(std::string(*id)) : id.outcome();
    }
    Result<Serial> serial = Serial::Read(parent);
    return serial.ok() ? Result(serial->Take()) : serial.outcome();
}

// Whether the console's port is its own at its address. At its platform's address the count finds
// the console itself, unless the platform has that port: it may then keep the port but not take it.
// At another address the count cannot find a console that is inside a platform.
Outcome PortStaysUnique(const Update& update) {
    const auto& [console, platform] = update.place;
    const std::string* given = NewValue(update.command, Property::kAddress);
    std::string_view address =
        given != nullptr
            ? *given
            : PropertyOrEmpty(platform == nullptr ? *console : *platform, Property::kAddress);
    if (address.empty()) {
        const auto own = GetPropertyValue(*console, Property::kAddress);
        if (!own) {
            return PropertyMissing(*console, Property::kAddress);
        }
        address = *own;
    }
    const auto port = GetPropertyValue(*console, Property::kPort);
    if (!port) {
        return PropertyMissing(*console, Property::kPort);
    }
    const bool is_seen =
        platform == nullptr || PropertyOrEmpty(*platform, Property::kAddress) == address;
    const bool takes_platform_port = is_seen && platform != nullptr && port != update.port_before &&
                                     PropertyOrEmpty(*platform, Property::kPort) == port;
    const int expected = is_seen ? 1 : 0;
    return takes_platform_port ||
                   update.inventory.GetCountOfConsolesWithAddress(address, *port) != expected
               ? PortTaken(*port)
               : Outcome();
}

// Not a check: the identifiers follow the port once all checks have passed.
Outcome RewriteIdentifiers(const Update& update) {
    return HandleConsolePortChange(*update.place.element, std::string(update.port_before),
                                   *NewValue(update.command, Property::kPort));
}

constexpr auto kValueChecks = std::to_array<ValueCheck>({
    {Property::kName, NewNameIsFree},
});

constexpr auto kWholeChecks = std::to_array<WholeCheck>({
    {Property::kLogging, Property::kEvents, EventsHaveLogging},
    {Property::kAddress, Property::kPort, PortStaysUnique},
    {Property::kPort, Property::kPort, RewriteIdentifiers},
});

}  // namespace

Outcome AddConsole(const Command& command, Inventory& inventory) {
    Addition addition(command, inventory, Owner::kConsole);
    if (Outcome outcome = Check(addition, kAdditionChecks); !outcome.ok()) {
        return outcome;
    }
    const Result<std::string> owner_id = TakeOwnerID(*addition.parent);
    if (owner_id.ok()) {
        const std::string id = ConsoleID(*owner_id, addition.values[Property::kPort]);
        inventory.Add(*addition.parent, Owner::kConsole, id, addition.values);
    }
    return owner_id.outcome();
}

Outcome UpdateConsole(const Command& command, Inventory& inventory) {
    const Result<Place> place = inventory.FindConsole(command.name);
    if (!place.ok()) {
        return place.outcome();
    }
    const auto& [console, platform] = *place;
    const RVT_Node& addressed = platform == nullptr ? *console : *platform;
    if (!GetPropertyValue(addressed, Property::kAddress)) {
        return PropertyMissing(addressed, Property::kAddress);
    }
    const Update update = {command, inventory, Owner::kConsole, *place,
                           PropertyOrEmpty(*console, Property::kPort)};
    return Apply(update, kValueChecks, kWholeChecks);
}

Outcome HandleConsolePortChange(const RVT_Node& console, const std::string& old_port,
                                std::string_view new_port) {
    RVT_Node* attribute = FindAttribute(console, ID_tag);
    if (attribute == nullptr) {
        return Failure(ExitCode::kIncompleteMap, "Console with port %s has no ID attribute.",
                       old_port.c_str());
    }
    const std::string old_id = attribute->GetValue();
    const size_t colon = old_id.find(':');
    if (colon == std::string::npos || old_id.substr(colon + 1) != old_port) {
        return Failure(ExitCode::kIncompleteMap, "Console with port %s has bad ID attribute.",
                       old_port.c_str());
    }
    const std::string new_id = ConsoleID(old_id.substr(0, colon), new_port);
    attribute->SetValue(new_id);
    UpdateIDsOfChildren(console, old_id, new_id);
    return {};
}

Outcome RemoveConsole(const Command& command, Inventory& inventory) {
    const Result<Place> place = inventory.FindConsole(command.name);
    if (place.ok()) {
        inventory.Remove(place->platform == nullptr ? *inventory.FindSystemMap() : *place->platform,
                         *place->element);
    }
    return place.outcome();
}
