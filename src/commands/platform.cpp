#include "commands/platform.h"

#include <array>

#include "base/error.h"
#include "commands/properties.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

static constexpr const char* kOwner = "Platform";

ExitCode AddPlatform(const std::string& platform_name, const std::string& model,
                     const std::string& address, const std::string& port,
                     const std::string& logging, const std::string& events,
                     const std::string& enable, const std::string& comment,
                     const std::string& template_name, const std::string& event_file,
                     const std::string& mapped_port, const std::string& auth,
                     const std::string& first_ts_port, const std::string& last_ts_port) {
    ExitCode code = ExitCode::kOk;
    const bool passed = Passed(Report(CheckNameIsFree(platform_name)), code) &&
                        Passed(Report(CheckNameForm(kOwner, platform_name)), code) &&
                        Passed(Report(CheckModel(model)), code) &&
                        Passed(Report(CheckPortForm(port)), code) &&
                        Passed(Report(CheckPortForm(mapped_port)), code) &&
                        Passed(Report(CheckPortForm(first_ts_port)), code) &&
                        Passed(Report(CheckPortForm(last_ts_port)), code) &&
                        Passed(Report(CheckPortRange(first_ts_port, last_ts_port)), code) &&
                        Passed(Report(CheckAddressForm(address)), code) &&
                        Passed(Report(CheckEventFile(event_file)), code) &&
                        Passed(Report(CheckAddressIsFree(nullptr, address)), code);
    RVT_Node* map = passed ? FindSystemMap() : nullptr;
    if (!passed || map == nullptr) {
        return code == ExitCode::kOk ? Report(SystemMapMissing(ExitCode::kIncompleteMap)) : code;
    }
    Result<Serial> serial = Serial::Read(*map);
    if (!serial.ok()) {
        return Report(serial.outcome());
    }
    const std::string id(serial->Text());
    serial->Advance();
    AddElementWithProperties(*map, Platform, id,
                             std::array<NewProperty, 14>{{
                                 {NameProp, platform_name},
                                 {AddrProp, address},
                                 {PortProp, port},
                                 {ModelProp, model},
                                 {DescProp, comment},
                                 {TemplateProp, template_name},
                                 {LoggingProp, logging},
                                 {EventsProp, events},
                                 {EnableProp, enable},
                                 {EventFileProp, event_file},
                                 {MappedPortProp, mapped_port},
                                 {AuthProp, auth},
                                 {FTSPProp, first_ts_port},
                                 {LTSPProp, last_ts_port},
                             }});
    return ExitCode::kOk;
}

namespace {

// What an update knows of its platform.
struct PlatformUpdate {
    const RVT_Node& platform;
    const std::string& name;
    bool changes_switches = false;
    bool changes_range = false;
};

ExitCode CheckNewAddress(PlatformUpdate& update, const std::string& value) {
    const ExitCode code = Report(CheckAddressForm(value));
    return code == ExitCode::kOk ? Report(CheckAddressIsFree(&update.platform, value)) : code;
}

// A port that changes may not be in use at the platform's address, as it stands by then.
ExitCode CheckNewPort(PlatformUpdate& update, const std::string& value) {
    const ExitCode code = Report(CheckPortForm(value));
    if (code != ExitCode::kOk || PropertyOrEmpty(update.platform, PortProp) == value) {
        return code;
    }
    const auto address = GetPropertyValue(update.platform, AddrProp);
    return Report(address ? CheckPortIsFree(*address, value)
                          : PropertyMissing(update.platform, AddrProp));
}

ExitCode NoteSwitch(PlatformUpdate& update, const std::string&) {
    update.changes_switches = true;
    return ExitCode::kOk;
}

ExitCode CheckRangeEnd(PlatformUpdate& update, const std::string& value) {
    update.changes_range = true;
    return Report(CheckPortForm(value));
}

constexpr std::array<PropertyCheck<PlatformUpdate>, 10> kChecks = {{
    {ModelProp,
     [](PlatformUpdate&, const std::string& value) { return Report(CheckModel(value)); }},
    {AddrProp, CheckNewAddress},
    {PortProp, CheckNewPort},
    {MappedPortProp,
     [](PlatformUpdate&, const std::string& value) { return Report(CheckPortForm(value)); }},
    {NameProp,
     [](PlatformUpdate& update, const std::string& value) {
         return Report(CheckNewName(kOwner, update.name, value));
     }},
    {LoggingProp, NoteSwitch},
    {EventsProp, NoteSwitch},
    {EventFileProp,
     [](PlatformUpdate&, const std::string& value) { return Report(CheckEventFile(value)); }},
    {FTSPProp, CheckRangeEnd},
    {LTSPProp, CheckRangeEnd},
}};

ExitCode PlatformNotFound(const std::string& name) {
    return Fail(ExitCode::kLookupFailed, "Platform \"%s\" not found.", name.c_str());
}

}  // namespace

ExitCode UpdatePlatform(const std::string& platform_name, NameValueList changes) {
    const RVT_Node* platform = FindPlatform(platform_name);
    if (platform == nullptr) {
        return PlatformNotFound(platform_name);
    }
    PlatformUpdate update{*platform, platform_name};
    ExitCode code = ApplyChanges<PlatformUpdate>(*platform, changes, kChecks, update);
    if (code == ExitCode::kOk && update.changes_switches) {
        code = Report(CheckSwitches(*platform));
    }
    if (code == ExitCode::kOk && update.changes_range) {
        code = Report(CheckPortRange(PropertyOrEmpty(*platform, FTSPProp),
                                     PropertyOrEmpty(*platform, LTSPProp)));
    }
    return code;
}

ExitCode RemovePlatform(const std::string& platform_name) {
    RVT_Node* platform = FindPlatform(platform_name);
    if (platform == nullptr) {
        return PlatformNotFound(platform_name);
    }
    platform->Delete();
    return ExitCode::kOk;
}
