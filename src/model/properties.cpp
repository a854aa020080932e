#include "model/properties.h"

#include <algorithm>

#include "model/vocabulary.h"

using enum Converted;

static constexpr std::optional<std::string_view> kRequired;

// clang-format off
constexpr std::array<PropertyRow, kPropertyCount> kPropertyTable = {{
    {Property::kName,        "Name",            "name",          ValueKind::kName,      kRequired},
    {Property::kAddress,     "Address",         "addr",          ValueKind::kAddress,   kRequired},
    {Property::kPort,        "Port Number",     "port",          ValueKind::kPort,      kRequired},
    {Property::kModel,       "Model",           "model",         ValueKind::kModel,     kRequired},
    {Property::kLogging,     "Logging Enabled", "logging",       ValueKind::kSwitch,    switch_on, kPlatforms, true},
    {Property::kEvents,      "Events Enabled",  "events",        ValueKind::kSwitch,    switch_on, kPlatforms, true},
    {Property::kEnable,      "Enable",          "enable",        ValueKind::kSwitch,    switch_on, kPlatformsAndTheirConsoles, true},
    {Property::kEventFile,   "Event File",      "evfile",        ValueKind::kEventFile, "",        kPlatformsAndTheirConsoles},
    {Property::kDescription, "Description",     "comment",       ValueKind::kText,      ""},
    {Property::kMappedPort,  "Mapped Port",     "mport",         ValueKind::kPort,      "0",       kPlatformsAndTheirConsoles},
    {Property::kAuth,        "Auth Enabled",    "auth",          ValueKind::kSwitch,    switch_on, kPlatformsAndTheirConsoles},
    {Property::kTemplate,    "Template",        "template",      ValueKind::kText,      ""},
    {Property::kFirstTsPort, "First TS Port",   "first_ts_port", ValueKind::kTsPort,    "2001",    kPlatforms},
    {Property::kLastTsPort,  "Last TS Port",    "last_ts_port",  ValueKind::kTsPort,    "2008",    kPlatforms},
    {Property::kType,        "Type",            "type",          ValueKind::kType,      unknown_value},
}};
// clang-format on
static_assert(std::ranges::is_sorted(kPropertyTable, {}, &PropertyRow::property));

static constexpr auto kOfPlatforms = std::to_array<Property>({
    Property::kName,
    Property::kAddress,
    Property::kPort,
    Property::kModel,
    Property::kDescription,
    Property::kTemplate,
    Property::kLogging,
    Property::kEvents,
    Property::kEnable,
    Property::kEventFile,
    Property::kMappedPort,
    Property::kAuth,
    Property::kFirstTsPort,
    Property::kLastTsPort,
});

static constexpr auto kOfConsoles = std::to_array<Property>({
    Property::kAddress,
    Property::kName,
    Property::kType,
    Property::kPort,
    Property::kDescription,
    Property::kLogging,
    Property::kEvents,
    Property::kEnable,
    Property::kEventFile,
    Property::kMappedPort,
    Property::kAuth,
});

std::span<const Property> PropertiesOf(Owner owner) {
    return owner == Owner::kPlatform ? std::span<const Property>(kOfPlatforms)
                                     : std::span<const Property>(kOfConsoles);
}

bool Has(Owner owner, Property property) {
    const auto properties = PropertiesOf(owner);
    return std::ranges::find(properties, property) != properties.end();
}
