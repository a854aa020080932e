#include "commands/console.h"

#include <array>

#include "base/error.h"
#include "commands/properties.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/uniqueness.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

static constexpr const char* kOwner = "System";
static constexpr std::string_view kBoolean = "boolean";

// The parent of a new console; a platform lends it its address.
static ExitCode FindParent(const std::string& platform_name, RVT_Node*& parent,
                           std::string& address) {
    if (platform_name.empty()) {
        parent = FindSystemMap();
        return parent == nullptr ? Report(SystemMapMissing(ExitCode::kLookupFailed))
                                 : ExitCode::kOk;
    }
    parent = FindPlatform(platform_name);
    if (parent == nullptr) {
        return Report(PlatformMissing(platform_name));
    }
    const auto platform_address = GetPropertyValue(*parent, AddrProp);
    if (!platform_address) {
        return Report(PropertyMissing(*parent, AddrProp));
    }
    address = *platform_address;
    return ExitCode::kOk;
}

// What stands before the port in a new console's identifier: its platform's identifier, or the
// serial number, which is then used up. Nothing can fail after this.
static ExitCode TakeOwnerID(RVT_Node& parent, std::string& id) {
    if (parent.IsName(Platform)) {
        const Result<std::string_view> platform_id = ReadID(parent);
        id = platform_id.ok() ? *platform_id : "";
        return Report(platform_id.outcome());
    }
    Result<Serial> serial = Serial::Read(parent);
    if (serial.ok()) {
        id = serial->Text();
        serial->Advance();
    }
    return Report(serial.outcome());
}

ExitCode AddConsole(const std::string& system_name, const std::string& platform_name,
                    std::string address, const std::string& port, const std::string& type,
                    const std::string& logging, const std::string& events,
                    const std::string& enable, const std::string& comment,
                    const std::string& event_file, const std::string& mapped_port,
                    const std::string& auth) {
    RVT_Node* parent = nullptr;
    std::string owner_id;
    ExitCode code = ExitCode::kOk;
    const bool passed = Passed(Report(CheckNameForm(kOwner, system_name)), code) &&
                        Passed(Report(CheckNameIsFree(system_name)), code) &&
                        (address.empty() || Passed(Report(CheckAddressForm(address)), code)) &&
                        Passed(Report(CheckPortForm(port)), code) &&
                        Passed(Report(CheckPortForm(mapped_port)), code) &&
                        Passed(Report(CheckOsType(type)), code) &&
                        Passed(FindParent(platform_name, parent, address), code) &&
                        Passed(Report(CheckPortIsFree(address, port)), code) &&
                        Passed(Report(CheckEventFile(event_file)), code) &&
                        Passed(Report(CheckEventsHaveLogging(logging, events)), code) &&
                        Passed(TakeOwnerID(*parent, owner_id), code);
    if (!passed) {
        return code;
    }
    const std::array<NewProperty, 11> properties = {{
        {AddrProp, address},
        {NameProp, system_name},
        {TypeProp, type},
        {PortProp, port},
        {DescProp, comment},
        {LoggingProp, logging, kBoolean},
        {EventsProp, events, kBoolean},
        {EnableProp, enable, kBoolean},
        {EventFileProp, event_file},
        {MappedPortProp, mapped_port},
        {AuthProp, auth},
    }};
    AddElementWithProperties(*parent, Console, ConsoleID(owner_id, port),
                             std::span(properties).subspan(address.empty() ? 1 : 0));
    return ExitCode::kOk;
}

namespace {

// A console and where it was found.
struct FoundConsole {
    RVT_Node* console = nullptr;
    const RVT_Node* platform = nullptr;  // null for a standalone console
};

// The first console called "name" in document order, inside a platform or standalone.
// kLookupFailed with "not found", or with the message of a standalone console without a name, which
// ends the search.
ExitCode FindAnyConsole(const std::string& name, FoundConsole& found) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return Report(SystemMapMissing(ExitCode::kLookupFailed));
    }
    for (RVT_Node& node : LiveElements(*map, Platform, Console)) {
        if (node.IsName(Platform)) {
            found = {FindConsole(node, name), &node};
        } else {
            const auto node_name = GetPropertyValue(node, NameProp);
            if (!node_name) {
                return Report(PropertyMissing(node, NameProp));
            }
            found = {node_name == name ? &node : nullptr, nullptr};
        }
        if (found.console != nullptr) {
            return ExitCode::kOk;
        }
    }
    return Fail(ExitCode::kLookupFailed, "Console \"%s\" not found.", name.c_str());
}

// What an update knows of its console.
struct ConsoleUpdate {
    const FoundConsole& found;
    const std::string& name;
    std::string address;   // where the console's port must be unique
    std::string old_port;  // before the first change of it
    std::string new_port;
    bool changes_address = false;
    bool changes_port = false;
    bool changes_switches = false;
};

ExitCode CheckNewAddress(ConsoleUpdate& update, const std::string& value) {
    const ExitCode code = Report(CheckAddressForm(value));
    if (code == ExitCode::kOk) {
        update.address = value;
        update.changes_address = true;
    }
    return code;
}

ExitCode CheckNewPort(ConsoleUpdate& update, const std::string& value) {
    const ExitCode code = Report(CheckPortForm(value));
    if (code == ExitCode::kOk) {
        if (!update.changes_port) {
            update.old_port = PropertyOrEmpty(*update.found.console, PortProp);
        }
        update.new_port = value;
        update.changes_port = true;
    }
    return code;
}

ExitCode NoteSwitch(ConsoleUpdate& update, const std::string&) {
    update.changes_switches = true;
    return ExitCode::kOk;
}

constexpr std::array<PropertyCheck<ConsoleUpdate>, 8> kChecks = {{
    {AddrProp, CheckNewAddress},
    {PortProp, CheckNewPort},
    {MappedPortProp,
     [](ConsoleUpdate&, const std::string& value) { return Report(CheckPortForm(value)); }},
    {NameProp,
     [](ConsoleUpdate& update, const std::string& value) {
         return Report(CheckNewName(kOwner, update.name, value));
     }},
    {LoggingProp, NoteSwitch},
    {EventsProp, NoteSwitch},
    {EventFileProp,
     [](ConsoleUpdate&, const std::string& value) { return Report(CheckEventFile(value)); }},
    {TypeProp, [](ConsoleUpdate&, const std::string& value) { return Report(CheckOsType(value)); }},
}};

// Whether the console's port is its own at its address. At its platform's address the count finds
// the console itself, unless the platform has that port: it may then keep the port but not take it.
// At another address the count cannot find a console that is inside a platform.
ExitCode CheckPortStaysUnique(const ConsoleUpdate& update) {
    const auto& [console, platform] = update.found;
    const auto own_address = GetPropertyValue(*console, AddrProp);
    if (update.address.empty() && !own_address) {
        return Report(PropertyMissing(*console, AddrProp));
    }
    const std::string_view address = update.address.empty() ? *own_address : update.address;
    const auto port = GetPropertyValue(*console, PortProp);
    if (!port) {
        return Report(PropertyMissing(*console, PortProp));
    }
    const bool seen = platform == nullptr || PropertyOrEmpty(*platform, AddrProp) == address;
    const bool takes_platform_port = seen && platform != nullptr && update.changes_port &&
                                     update.new_port != update.old_port &&
                                     PropertyOrEmpty(*platform, PortProp) == port;
    const int expected = seen ? 1 : 0;
    return takes_platform_port || GetCountOfConsolesWithAddress(address, *port) != expected
               ? Report(PortTaken(*port))
               : ExitCode::kOk;
}

}  // namespace

ExitCode UpdateConsole(const std::string& system_name, NameValueList list) {
    FoundConsole found;
    ExitCode code = FindAnyConsole(system_name, found);
    if (code != ExitCode::kOk) {
        return code;
    }
    RVT_Node& console = *found.console;
    const RVT_Node& addressed = found.platform == nullptr ? console : *found.platform;
    const auto address = GetPropertyValue(addressed, AddrProp);
    if (!address) {
        return Report(PropertyMissing(addressed, AddrProp));
    }
    ConsoleUpdate update{found, system_name, std::string(*address), "", ""};
    code = ApplyChanges<ConsoleUpdate>(console, list, kChecks, update);
    if (code == ExitCode::kOk && update.changes_switches) {
        code = Report(CheckSwitches(console));
    }
    if (code == ExitCode::kOk && (update.changes_address || update.changes_port)) {
        code = CheckPortStaysUnique(update);
    }
    if (code == ExitCode::kOk && update.changes_port) {
        code = HandleConsolePortChange(console, update.old_port, update.new_port);
    }
    return code;
}

ExitCode HandleConsolePortChange(RVT_Node& console, const std::string& old_port,
                                 const std::string& new_port) {
    std::string old_id;
    std::string new_id;
    const ExitCode code = UpdateConsoleID(console, old_port, new_port, old_id, new_id);
    if (code == ExitCode::kOk) {
        UpdateIDsOfChildren(console, old_id, new_id);
    }
    return code;
}

ExitCode UpdateConsoleID(RVT_Node& console, const std::string& old_port,
                         const std::string& new_port, std::string& old_id, std::string& new_id) {
    RVT_Node* attribute = FindAttribute(console, ID_tag);
    if (attribute == nullptr) {
        return Fail(ExitCode::kIncompleteMap, "Console with port %s has no ID attribute.",
                    old_port.c_str());
    }
    old_id = attribute->GetValue();
    const size_t colon = old_id.find(':');
    if (colon == std::string::npos || old_id.substr(colon + 1) != old_port) {
        return Fail(ExitCode::kIncompleteMap, "Console with port %s has bad ID attribute.",
                    old_port.c_str());
    }
    new_id = ConsoleID(old_id.substr(0, colon), new_port);
    attribute->SetValue(new_id);
    return ExitCode::kOk;
}

ExitCode RemoveConsole(const std::string& system_name) {
    FoundConsole found;
    const ExitCode code = FindAnyConsole(system_name, found);
    if (code == ExitCode::kOk) {
        found.console->Delete();
    }
    return code;
}
