#include "model/properties.h"

#include <algorithm>

#include "model/vocabulary.h"

using enum Converted;
using enum Property;

static constexpr std::optional<std::string_view> kRequired;

// clang-format off
constexpr std::array<PropertyRow, kPropertyCount> kPropertyTable = {{
    {kName,        "Name",            "name",          ValueKind::kName,      kRequired},
    {kAddress,     "Address",         "addr",          ValueKind::kAddress,   kRequired},
    {kPort,        "Port Number",     "port",          ValueKind::kPort,      kRequired},
    {kModel,       "Model",           "model",         ValueKind::kModel,     kRequired},
    {kLogging,     "Logging Enabled", "logging",       ValueKind::kSwitch,    switch_on, kPlatforms, true},
    {kEvents,      "Events Enabled",  "events",        ValueKind::kSwitch,    switch_on, kPlatforms, true},
    {kEnable,      "Enable",          "enable",        ValueKind::kSwitch,    switch_on, kPlatformsAndTheirConsoles, true},
    {kEventFile,   "Event File",      "evfile",        ValueKind::kEventFile, "",        kPlatformsAndTheirConsoles},
    {kDescription, "Description",     "comment",       ValueKind::kText,      ""},
    {kMappedPort,  "Mapped Port",     "mport",         ValueKind::kPort,      "0",       kPlatformsAndTheirConsoles},
    {kAuth,        "Auth Enabled",    "auth",          ValueKind::kSwitch,    switch_on, kPlatformsAndTheirConsoles},
    {kTemplate,    "Template",        "template",      ValueKind::kText,      ""},
    {kFirstTsPort, "First TS Port",   "first_ts_port", ValueKind::kTsPort,    "2001",    kPlatforms},
    {kLastTsPort,  "Last TS Port",    "last_ts_port",  ValueKind::kTsPort,    "2008",    kPlatforms},
    {kType,        "Type",            "type",          ValueKind::kType,      unknown_value},
}};
// clang-format on
static_assert(std::ranges::is_sorted(kPropertyTable, {}, &PropertyRow::property));

static constexpr auto kOfPlatforms = std::to_array<Property>(
    {kName, kAddress, kPort, kModel, kDescription, kTemplate, kLogging, kEvents, kEnable,
     kEventFile, kMappedPort, kAuth, kFirstTsPort, kLastTsPort});

static constexpr auto kOfConsoles =
    std::to_array<Property>({kAddress, kName, kType, kPort, kDescription, kLogging, kEvents,
                             kEnable, kEventFile, kMappedPort, kAuth});

static constexpr auto kListed = std::to_array<Property>(
    {kName, kModel, kType, kAddress, kPort, kMappedPort, kFirstTsPort, kLastTsPort, kAuth, kEnable,
     kLogging, kEvents, kEventFile, kTemplate, kDescription});
static_assert(kListed.size() == kPropertyCount);

std::span<const Property> ListedProperties() {
    return kListed;
}

std::span<const Property> PropertiesOf(Owner owner) {
    return owner == Owner::kPlatform ? std::span<const Property>(kOfPlatforms)
                                     : std::span<const Property>(kOfConsoles);
}

bool Has(Owner owner, Property property) {
    const auto properties = PropertiesOf(owner);
    return std::ranges::find(properties, property) != properties.end();
}

size_t PropertyValues::Count() const {
    return static_cast<size_t>(std::ranges::count_if(
        texts_, [](std::string_view text) { return text.data() != nullptr; }));
}

bool PropertyValues::operator==(const PropertyValues& other) const {
    return std::ranges::equal(texts_, other.texts_, [](std::string_view a, std::string_view b) {
        return (a.data() == nullptr) == (b.data() == nullptr) && a == b;
    });
}
