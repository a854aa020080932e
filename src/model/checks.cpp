#include "model/checks.h"

#include <string>

#include "model/validation.h"
#include "model/vocabulary.h"

static Outcome InvalidName(Owner owner) {
    return Failure(ExitCode::kInvalidName,
                   "%s name contains invalid characters.\n"
                   "Use only alpha-numeric characters, \".\", and \"-\".",
                   owner == Owner::kPlatform ? "Platform" : "System");
}

// Whether a value is of the form of its kind, or listed where it must be.
static bool HasForm(ValueKind kind, std::string_view value) {
    switch (kind) {
        case ValueKind::kName:
            return IsValidName(value);
        case ValueKind::kAddress:
            return IsValidAddress(value);
        case ValueKind::kPort:
        case ValueKind::kTsPort:
            return IsValidPortNumber(value);
        case ValueKind::kModel:
            return IsPlainText(value) && IsModelNumberInDatabase(value);
        case ValueKind::kType:
            return IsPlainText(value) && IsOSTypeInDatabase(value);
        case ValueKind::kEventFile:
            return IsPlainText(value) && EventFileExists(value);
        case ValueKind::kSwitch:
        case ValueKind::kText:
            break;
    }
    return true;
}

Outcome CheckForm(Owner owner, Property property, std::string_view value) {
    const ValueKind kind = RowOf(property).kind;
    if (HasForm(kind, value)) {
        return {};
    }
    const std::string text(value);
    switch (kind) {
        case ValueKind::kName:
            return InvalidName(owner);
        case ValueKind::kAddress:
            return Failure(ExitCode::kInvalidAddress, "Invalid IP address \"%s\".", text.c_str());
        case ValueKind::kModel:
            return {ExitCode::kUnknownModel, "The model is not in the database."};
        case ValueKind::kType:
            return {ExitCode::kUnknownOsType, "The OS type is not in the database."};
        case ValueKind::kEventFile:
            return Failure(ExitCode::kEventFileNotFound, "Event file \"%s\" not found.",
                           text.c_str());
        default:
            return Failure(ExitCode::kInvalidPort, "Invalid port number \"%s\".", text.c_str());
    }
}

Outcome CheckNameIsFree(const Inventory& inventory, std::string_view name) {
    return inventory.IsDuplicateName(name)
               ? Failure(ExitCode::kNameTaken, "Duplicate name \"%s\".", std::string(name).c_str())
               : Outcome();
}

Outcome CheckAddressIsFree(const Inventory& inventory, const RVT_Node* node,
                           std::string_view address) {
    return inventory.IsDuplicateAddress(node, address)
               ? Failure(ExitCode::kAddressTaken, "Duplicate IP address \"%s\".",
                         std::string(address).c_str())
               : Outcome();
}

Outcome CheckPortIsFree(const Inventory& inventory, std::string_view address,
                        std::string_view port) {
    return inventory.IsDuplicatePortWithinAddress(address, port) ? PortTaken(port) : Outcome();
}

Outcome PortTaken(std::string_view port) {
    return Failure(ExitCode::kPortTaken, "Duplicate port number \"%s\".",
                   std::string(port).c_str());
}

Outcome CheckPortRange(std::string_view first, std::string_view last) {
    if (IsValidPortRange(first, last)) {
        return {};
    }
    return {ExitCode::kInvalidPortRange,
            "The first and last terminal server port values are out of range. \n"
            "The difference between the values of the first and the last terminal \n"
            "server port should not be more than 16."};
}

Outcome CheckEventsHaveLogging(std::string_view logging, std::string_view events) {
    return logging == switch_off && events == switch_on
               ? Outcome(ExitCode::kEventsWithoutLogging,
                         "Events cannot be enabled when logging is disabled.")
               : Outcome();
}
