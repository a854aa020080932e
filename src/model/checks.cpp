#include "model/checks.h"

#include <string>

#include "model/uniqueness.h"
#include "model/validation.h"
#include "model/vocabulary.h"

Outcome CheckNameForm(const char* owner, std::string_view name) {
    if (IsValidName(name)) {
        return {};
    }
    return Failure(ExitCode::kInvalidName,
                   "%s name contains invalid characters.\n"
                   "Use only alpha-numeric characters, \".\", and \"-\".",
                   owner);
}

Outcome CheckNameIsFree(std::string_view name) {
    return IsDuplicateName(name)
               ? Failure(ExitCode::kNameTaken, "Duplicate name \"%s\".", std::string(name).c_str())
               : Outcome();
}

Outcome CheckModel(std::string_view model) {
    return IsPlainText(model) && IsModelNumberInDatabase(model)
               ? Outcome()
               : Failure(ExitCode::kUnknownModel, "The model is not in the database.");
}

Outcome CheckOsType(std::string_view type) {
    return IsPlainText(type) && IsOSTypeInDatabase(type)
               ? Outcome()
               : Failure(ExitCode::kUnknownOsType, "The OS type is not in the database.");
}

Outcome CheckAddressForm(std::string_view address) {
    return IsValidAddress(address)
               ? Outcome()
               : Failure(ExitCode::kInvalidAddress, "Invalid IP address \"%s\".",
                         std::string(address).c_str());
}

Outcome CheckAddressIsFree(const RVT_Node* node, std::string_view address) {
    return IsDuplicateAddress(node, address)
               ? Failure(ExitCode::kAddressTaken, "Duplicate IP address \"%s\".",
                         std::string(address).c_str())
               : Outcome();
}

Outcome CheckPortForm(std::string_view port) {
    return IsValidPortNumber(port) ? Outcome()
                                   : Failure(ExitCode::kInvalidPort, "Invalid port number \"%s\".",
                                             std::string(port).c_str());
}

Outcome CheckPortIsFree(std::string_view address, std::string_view port) {
    return IsDuplicatePortWithinAddress(address, port) ? PortTaken(port) : Outcome();
}

Outcome PortTaken(std::string_view port) {
    return Failure(ExitCode::kPortTaken, "Duplicate port number \"%s\".",
                   std::string(port).c_str());
}

Outcome CheckPortRange(std::string_view first, std::string_view last) {
    if (IsValidPortRange(first, last)) {
        return {};
    }
    return Failure(ExitCode::kInvalidPortRange,
                   "The first and last terminal server port values are out of range. \n"
                   "The difference between the values of the first and the last terminal \n"
                   "server port should not be more than 16.");
}

Outcome CheckEventFile(std::string_view name) {
    return IsPlainText(name) && EventFileExists(name)
               ? Outcome()
               : Failure(ExitCode::kEventFileNotFound, "Event file \"%s\" not found.",
                         std::string(name).c_str());
}

Outcome CheckEventsHaveLogging(std::string_view logging, std::string_view events) {
    return logging == switch_off && events == switch_on
               ? Failure(ExitCode::kEventsWithoutLogging,
                         "Events cannot be enabled when logging is disabled.")
               : Outcome();
}
