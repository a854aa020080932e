#include "model/checks.h"

#include <algorithm>
#include <array>
#include <string>

#include "model/validation.h"
#include "model/vocabulary.h"

namespace {

// What a value of a kind must be, and what is said of another: the value, or for a name the sort of
// its owner, stands between "before" and "after", nothing where there is no "after".
struct Form {
    ValueKind kind;
    bool (*is_valid)(std::string_view value, ReferenceFiles& files);
    ExitCode code;
    const char* before;
    const char* after = "";
};

bool IsName(std::string_view value, ReferenceFiles& /*files*/) {
    return IsValidName(value);
}
bool IsAddress(std::string_view value, ReferenceFiles& /*files*/) {
    return IsValidAddress(value);
}
bool IsPort(std::string_view value, ReferenceFiles& /*files*/) {
    return IsValidPortNumber(value);
}
bool IsModel(std::string_view value, ReferenceFiles& files) {
    return IsPlainText(value) && files.IsModelNumberInDatabase(value);
}
bool IsType(std::string_view value, ReferenceFiles& files) {
    return IsPlainText(value) && files.IsOSTypeInDatabase(value);
}
bool IsEventFile(std::string_view value, ReferenceFiles& files) {
    return IsPlainText(value) && files.EventFileExists(value);
}

constexpr auto kForms = std::to_array<Form>({
    {ValueKind::kName, IsName, ExitCode::kInvalidName, "",
     " name contains invalid characters.\n"
     "Use only alpha-numeric characters, \".\", and \"-\"."},
    {ValueKind::kAddress, IsAddress, ExitCode::kInvalidAddress, "Invalid IP address \"", "\"."},
    {ValueKind::kPort, IsPort, ExitCode::kInvalidPort, "Invalid port number \"", "\"."},
    {ValueKind::kTsPort, IsPort, ExitCode::kInvalidPort, "Invalid port number \"", "\"."},
    {ValueKind::kModel, IsModel, ExitCode::kUnknownModel, "The model is not in the database."},
    {ValueKind::kType, IsType, ExitCode::kUnknownOsType, "The OS type is not in the database."},
    {ValueKind::kEventFile, IsEventFile, ExitCode::kEventFileNotFound, "Event file \"",
     "\" not found."},
});

}  // namespace

Outcome CheckForm(Owner owner, Property property, std::string_view value, ReferenceFiles& files) {
    const auto form = std::ranges::find(kForms, RowOf(property).kind, &Form::kind);
    if (form == kForms.end() || form->is_valid(value, files)) {
        return {};
    }
    std::string between(*form->after == '\0' ? "" : value);
    if (form->kind == ValueKind::kName) {
        between = owner == Owner::kPlatform ? "Platform" : "System";
    }
    return Failure(form->code, "%s%s%s", form->before, between.c_str(), form->after);
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
