// The properties of platforms and consoles: one table, from which additions, updates, the
// conversion, kfx.conf and the command line work. A new property is a row of it, and a place in the
// lists of those that have it.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

// In the order of the table, in which one that is missing is noticed.
enum class Property {
    kName,
    kAddress,
    kPort,
    kModel,
    kLogging,
    kEvents,
    kEnable,
    kEventFile,
    kDescription,
    kMappedPort,
    kAuth,
    kTemplate,
    kFirstTsPort,
    kLastTsPort,
    kType
};
inline constexpr size_t kPropertyCount = static_cast<size_t>(Property::kType) + 1;

// What a value may be. A terminal-server port is one end of a range; text is anything that the map
// can hold on one line of kfx.conf.
enum class ValueKind { kName, kAddress, kPort, kTsPort, kModel, kType, kEventFile, kSwitch, kText };

// Who has properties. A console has an address only when it was given one.
enum class Owner { kPlatform, kConsole };

// The elements that the conversion gives a property, with its initial value, when an older map
// lacks it. A new property takes kOwners: all elements that have it. The other rows leave out
// standalone consoles, which the maps of their time did not have.
enum class Converted { kNobody, kPlatforms, kPlatformsAndTheirConsoles, kOwners };

struct PropertyRow {
    Property property;
    std::string_view name;  // in the map
    std::string_view key;   // its option without the dash
    ValueKind kind;
    std::optional<std::string_view> initial;  // none: it must be given
    Converted converted = Converted::kNobody;
    bool is_boolean_in_consoles = false;  // a new console's has the attribute type="boolean"
};

// In the order of Property.
extern const std::array<PropertyRow, kPropertyCount> kPropertyTable;

inline const PropertyRow& RowOf(Property property) {
    return kPropertyTable[static_cast<size_t>(property)];
}

// The properties of an element, in the order in which a new one has them.
std::span<const Property> PropertiesOf(Owner owner);
bool Has(Owner owner, Property property);

// All properties, in the order in which they are shown to people.
std::span<const Property> ListedProperties();

// A text for each property, or none.
class PropertyValues {
  public:
    [[nodiscard]] bool Has(Property property) const { return (*this)[property].data() != nullptr; }
    std::string_view& operator[](Property property) {
        return texts_[static_cast<size_t>(property)];
    }
    const std::string_view& operator[](Property property) const {
        return texts_[static_cast<size_t>(property)];
    }
    // How many properties have a text.
    [[nodiscard]] size_t Count() const;
    // Whether the same properties have the same texts.
    bool operator==(const PropertyValues& other) const;

  private:
    std::array<std::string_view, kPropertyCount> texts_;
};
