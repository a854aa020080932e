#include "model/checks.h"

#include "base/error.h"
#include "model/uniqueness.h"
#include "model/validation.h"
#include "model/vocabulary.h"

ExitCode CheckNameForm(const char* owner, const std::string& name) {
    if (IsValidName(name)) {
        return ExitCode::kOk;
    }
    return Fail(ExitCode::kInvalidName,
                "%s name contains invalid characters.\n"
                "Use only alpha-numeric characters, \".\", and \"-\".",
                owner);
}

ExitCode CheckNameIsFree(const std::string& name) {
    return IsDuplicateName(name)
               ? Fail(ExitCode::kNameTaken, "Duplicate name \"%s\".", name.c_str())
               : ExitCode::kOk;
}

ExitCode CheckModel(const std::string& model) {
    return IsPlainText(model) && IsModelNumberInDatabase(model)
               ? ExitCode::kOk
               : Fail(ExitCode::kUnknownModel, "The model is not in the database.");
}

ExitCode CheckOsType(const std::string& type) {
    return IsPlainText(type) && IsOSTypeInDatabase(type)
               ? ExitCode::kOk
               : Fail(ExitCode::kUnknownOsType, "The OS type is not in the database.");
}

ExitCode CheckAddressForm(const std::string& address) {
    return IsValidAddress(address)
               ? ExitCode::kOk
               : Fail(ExitCode::kInvalidAddress, "Invalid IP address \"%s\".", address.c_str());
}

ExitCode CheckAddressIsFree(const RVT_Node* node, const std::string& address) {
    return IsDuplicateAddress(node, address)
               ? Fail(ExitCode::kAddressTaken, "Duplicate IP address \"%s\".", address.c_str())
               : ExitCode::kOk;
}

ExitCode CheckPortForm(const std::string& port) {
    return IsValidPortNumber(port)
               ? ExitCode::kOk
               : Fail(ExitCode::kInvalidPort, "Invalid port number \"%s\".", port.c_str());
}

ExitCode CheckPortIsFree(std::string_view address, const std::string& port) {
    return IsDuplicatePortWithinAddress(address, port) ? PortTaken(port) : ExitCode::kOk;
}

ExitCode PortTaken(std::string_view port) {
    return Fail(ExitCode::kPortTaken, "Duplicate port number \"%s\".", std::string(port).c_str());
}

ExitCode CheckPortRange(std::string_view first, std::string_view last) {
    if (IsValidPortRange(first, last)) {
        return ExitCode::kOk;
    }
    return Fail(ExitCode::kInvalidPortRange,
                "The first and last terminal server port values are out of range. \n"
                "The difference between the values of the first and the last terminal \n"
                "server port should not be more than 16.");
}

ExitCode CheckEventFile(const std::string& name) {
    return IsPlainText(name) && EventFileExists(name)
               ? ExitCode::kOk
               : Fail(ExitCode::kEventFileNotFound, "Event file \"%s\" not found.", name.c_str());
}

ExitCode CheckEventsHaveLogging(std::string_view logging, std::string_view events) {
    return logging == switch_off && events == switch_on
               ? Fail(ExitCode::kEventsWithoutLogging,
                      "Events cannot be enabled when logging is disabled.")
               : ExitCode::kOk;
}
