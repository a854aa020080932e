#include "report/check.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <unordered_map>

#include "base/quoted.h"
#include "base/text.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/validation.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

namespace {

// Where something is wrong: a start tag in a map or, without one, a property of an element.
struct Spot {
    const Element* element = nullptr;  // null for the map itself
    const RVT_Node* tag = nullptr;     // null where there is no map
    size_t property = 0;               // its place among those of the element, from 1; 0 for none
};

std::string NameOf(const Element& element) {
    static constexpr size_t kLongest = 200;
    std::string_view name = "without a name";
    if (element.values.Has(Property::kName)) {
        name = element.Name();
    } else if (element.id.data() != nullptr) {
        name = element.id;
    }
    return std::string(KindOf(element.owner)) + ' ' + Printable(name, kLongest);
}

// The spot of a property, or of the element that lacks it.
Spot SpotOf(const Element& element, Property property) {
    const auto properties = PropertiesOf(element.owner);
    Spot spot = {&element, element.node};
    const RVT_Node* map = element.node == nullptr ? nullptr : FindPropertyMap(*element.node);
    const RVT_Node* tag = map == nullptr ? nullptr : FindProperty(*map, RowOf(property).name);
    spot.tag = tag != nullptr ? tag : spot.tag;
    spot.property =
        1 + static_cast<size_t>(std::ranges::find(properties, property) - properties.begin());
    return spot;
}

class Checker {
  public:
    Checker(const Outline& outline, bool says_all)
        : map_(*outline.map), root_{nullptr, outline.map}, says_all_(says_all) {
        CheckMap();
        for (const Element* element : outline.elements) {
            CheckElement(*element);
        }
    }

    // What was found, and where.
    struct Note {
        Spot spot;
        Spot earlier;  // of nothing where "text" mentions no other
        bool is_error;
        std::string text;
    };
    std::vector<Note> notes;

  private:
    void Put(const Spot& spot, bool is_error, std::string text, const Spot& earlier = {}) {
        notes.push_back({spot, earlier, is_error, std::move(text)});
    }
    // An error in an element.
    void Error(const Spot& spot, const std::string& text, const Spot& earlier = {}) {
        Put(spot, true, NameOf(*spot.element) + ": " + text, earlier);
    }
    void ErrorIfNot(const Outcome& outcome, const Spot& spot) {
        if (!outcome.ok()) {
            std::string text = outcome.message();
            std::ranges::replace(text, '\n', ' ');
            Put(spot, true,
                (spot.element == nullptr ? "map" : NameOf(*spot.element)) + ": " + text);
        }
    }

    void CheckMap() {
        const Result<long> serial = ReadSerial(map_);
        ErrorIfNot(serial.outcome(), root_);
        const auto expect = [this](std::string_view name, auto is_right) {
            const Result<RVT_Node*> attribute = FindMapAttribute(map_, name);
            ErrorIfNot(attribute.outcome(), root_);
            if (attribute.ok() && !is_right(std::string_view((*attribute)->GetValue()))) {
                Put(root_, true,
                    "map: " + std::string(name) + " is \"" + (*attribute)->GetValue() + "\"");
            }
        };
        expect(security_tag, [](std::string_view v) { return v == switch_on || v == switch_off; });
        expect(version_tag, [](std::string_view v) { return v == systemmap_version; });
        serial_ = serial.ok() ? *serial : 0;
    }

    void CheckElement(const Element& element) {
        const RVT_Node* map = element.node == nullptr ? nullptr : FindPropertyMap(*element.node);
        if (says_all_) {
            CheckID(element, map);
        }
        if (element.node != nullptr && map == nullptr) {
            Error({&element, element.node}, "no property map");
            return;
        }
        if (map != nullptr) {
            CheckPropertyMaps(element, *map);
        }
        for (const Property property : PropertiesOf(element.owner)) {
            CheckValue(element, property);
        }
        CheckTogether(element);
        CheckUses(element);
    }

    // Each property once, and only those that the element has.
    void CheckPropertyMaps(const Element& element, const RVT_Node& property_map) {
        for (const RVT_Node& map : LiveElements(*element.node, tag::PropertyMap)) {
            if (&map != &property_map) {
                Error({&element, &map}, "a second property map", {&element, &property_map});
            }
        }
        const auto properties = PropertiesOf(element.owner);
        std::array<const RVT_Node*, kPropertyCount> seen{};
        for (const RVT_Node& property : LiveElements(property_map, tag::Property)) {
            const RVT_Node* called = FindAttribute(property, kNameId);
            const std::string_view name = called == nullptr ? "" : called->GetValue();
            const auto known =
                std::ranges::find(properties, name, [](Property one) { return RowOf(one).name; });
            if (known == properties.end()) {
                Error({&element, &property},
                      "property \"" + std::string(name) + "\" does not belong here");
                continue;
            }
            const RVT_Node*& first = seen.at(static_cast<size_t>(*known));
            if (first != nullptr) {
                Error({&element, &property}, "property \"" + std::string(name) + "\" twice",
                      {&element, first});
            } else {
                first = &property;
            }
        }
    }

    void CheckValue(const Element& element, Property property) {
        const std::string_view value = element.values[property];
        if (!element.values.Has(property)) {
            if (says_all_) {
                ErrorIfNot(PropertyMissing(*element.node, property), SpotOf(element, property));
            }
            return;
        }
        if (RowOf(property).kind == ValueKind::kSwitch) {
            if (value != switch_on && value != switch_off) {
                Error(SpotOf(element, property), std::string(RowOf(property).name) + " is \"" +
                                                     std::string(value) +
                                                     "\", neither true nor false");
            }
            return;
        }
        if (property == Property::kName && value.empty()) {
            Error(SpotOf(element, property), "the name is empty");
        }
        if (!says_all_ && !IsReadAsWritten(value)) {
            Error(SpotOf(element, property), Shortened(value) + " would not be kept as it is");
        }
        if (const Outcome& outcome = Verdict(element.owner, property, value); !outcome.ok()) {
            ErrorIfNot(outcome, SpotOf(element, property));
        }
    }

    // Values recur, and a look into a reference file is dear.
    const Outcome& Verdict(Owner owner, Property property, std::string_view value) {
        auto& known = verdicts_[{RowOf(property).kind, owner}];
        const auto found = known.find(value);
        return found != known.end()
                   ? found->second
                   : known.emplace(value, CheckForm(owner, property, value, files_)).first->second;
    }

    // Rules on more than one value of an element.
    void CheckTogether(const Element& element) {
        const PropertyValues& values = element.values;
        const bool is_platform = element.owner == Owner::kPlatform;
        const Outcome switches =
            CheckEventsHaveLogging(values[Property::kLogging], values[Property::kEvents]);
        if (!switches.ok()) {
            Put(SpotOf(element, Property::kLogging), !is_platform,
                NameOf(element) + ": " + switches.message());
        }
        if (is_platform && values.Has(Property::kFirstTsPort) &&
            values.Has(Property::kLastTsPort)) {
            ErrorIfNot(
                CheckPortRange(values[Property::kFirstTsPort], values[Property::kLastTsPort]),
                SpotOf(element, Property::kLastTsPort));
        }
        if (element.IsInPlatform() && values.Has(Property::kAddress) &&
            values[Property::kAddress] != element.Address()) {
            Put(SpotOf(element, Property::kAddress), false,
                NameOf(element) + ": its address " + std::string(values[Property::kAddress]) +
                    " is not its platform's, " + std::string(element.Address()));
        }
    }

    // Names, addresses and ports may be used once. What is inside a standalone console counts
    // nowhere.
    void CheckUses(const Element& element) {
        if (element.parent != nullptr && !element.IsInPlatform()) {
            return;
        }
        if (element.values.Has(Property::kName)) {
            CheckName(element);
        }
        if (element.Address().data() == nullptr) {
            return;
        }
        if (!element.IsInPlatform()) {
            CheckAddress(element);
        }
        if (element.values.Has(Property::kPort)) {
            CheckPort(element);
        }
    }
    void CheckName(const Element& element) {
        const auto [user, is_new] = names_.emplace(ToLower(element.Name()), &element);
        if (!is_new) {
            PutUser(element, Property::kName, "the name", *user->second);
        }
    }
    // Platforms alone have an address for themselves.
    void CheckAddress(const Element& element) {
        const std::string_view address = element.Address();
        const bool is_platform = element.owner == Owner::kPlatform;
        std::vector<const Element*>& users = addresses_[address];
        const auto platform = std::ranges::find(users, Owner::kPlatform, &Element::owner);
        const auto other = is_platform && platform == users.end() ? users.begin() : platform;
        if (other != users.end()) {
            PutUser(element, Property::kAddress, "address " + std::string(address), **other,
                    is_platform && (*other)->owner == Owner::kPlatform);
        }
        if (users.empty() || is_platform) {
            users.push_back(&element);
        }
    }
    void CheckPort(const Element& element) {
        const std::string address(element.Address());
        const std::string port(element.values[Property::kPort]);
        const auto [user, is_new] = ports_.emplace(address + ' ' + port, &element);
        if (!is_new) {
            PutUser(element, Property::kPort, "port " + port, *user->second, true,
                    " at " + address);
        }
    }
    // That "what", a property's value, is in use by another element.
    void PutUser(const Element& element, Property property, const std::string& what,
                 const Element& user, bool is_error = true, const std::string& where = "") {
        Put(SpotOf(element, property), is_error,
            NameOf(element) + ": " + what + " is in use" + where + " by " +
                std::string(user.Name()),
            SpotOf(user, property));
    }

    // 7, 7:2003 of its console at port 2003, 12:2005 of a standalone one, each with its .pmap.
    void CheckID(const Element& element, const RVT_Node* property_map) {
        const Spot spot = {&element, element.node};
        if (element.id.data() == nullptr) {
            Error(spot, "no identifier");
            return;
        }
        const std::string id(element.id);
        const auto [user, is_new] = ids_.emplace(element.id, &element);
        if (!is_new) {
            Error(spot, "identifier " + id + " twice", {user->second, user->second->node});
        }
        if (!HasFormOfID(element)) {
            Error(spot, "identifier \"" + id + "\" is not of its form, or not below the serial");
        }
        const RVT_Node* map_id =
            property_map == nullptr ? nullptr : FindAttribute(*property_map, kIDId);
        if (property_map != nullptr && (map_id == nullptr || !map_id->IsValue(PropertyMapID(id)))) {
            Error({&element, property_map},
                  "the property map's identifier is not " + PropertyMapID(id));
        }
    }
    [[nodiscard]] bool HasFormOfID(const Element& element) const {
        if (element.owner == Owner::kPlatform) {
            return IsBelowSerial(element.id);
        }
        const std::string_view owner = element.id.substr(0, element.id.find(':'));
        const bool has_port = !element.values.Has(Property::kPort) ||
                              element.id == ConsoleID(owner, element.values[Property::kPort]);
        if (element.parent == nullptr) {
            return has_port && IsBelowSerial(owner);
        }
        const std::string_view around = element.parent->id;
        return has_port && (!element.IsInPlatform() || around.data() == nullptr || owner == around);
    }
    [[nodiscard]] bool IsBelowSerial(std::string_view number) const {
        return IsValidPortNumber(number) &&
               (serial_ == 0 ||
                (number.size() < 20 && strtol(std::string(number).c_str(), nullptr, 10) < serial_));
    }

    const RVT_Node& map_;
    const Spot root_;
    bool says_all_;    // an inventory in a file has no identifiers, and may leave properties out
    long serial_ = 0;  // 0 when the map has none
    ReferenceFiles files_;
    std::map<std::pair<ValueKind, Owner>, std::unordered_map<std::string_view, Outcome>> verdicts_;
    // The first element that uses something.
    std::unordered_map<std::string, const Element*> names_;
    std::unordered_map<std::string, const Element*> ports_;
    std::unordered_map<std::string_view, const Element*> ids_;
    std::unordered_map<std::string_view, std::vector<const Element*>> addresses_;
};

// Numbers the start tags of a document.
void Number(const NodeWalk& nodes, std::unordered_map<const RVT_Node*, size_t>& wanted,
            size_t& count) {
    for (const RVT_Node& node : nodes) {
        if (node.IsType(RVT_ELEMENT)) {
            ++count;
            if (const auto found = wanted.find(&node); found != wanted.end()) {
                found->second = count;
            }
            Number(Children(node), wanted, count);
        }
    }
}

}  // namespace

std::vector<Finding> Check(const Outline& outline, const RVT_XML_Tree* document) {
    Checker checker(outline, document != nullptr);
    std::unordered_map<const RVT_Node*, size_t> numbers;
    for (const Checker::Note& note : checker.notes) {
        numbers[note.spot.tag] = numbers[note.earlier.tag] = 0;
    }
    if (size_t count = 0; document != nullptr && !checker.notes.empty()) {
        Number(Children(*document), numbers, count);
    }
    const auto position = [&](const Spot& spot) {
        const size_t element = spot.element == nullptr ? 0 : 1 + spot.element->index;
        return document != nullptr ? numbers.at(spot.tag) : element;
    };
    std::ranges::stable_sort(checker.notes, {}, [&](const Checker::Note& note) {
        return std::pair(position(note.spot), document != nullptr ? 0 : note.spot.property);
    });
    std::vector<Finding> findings;
    for (Checker::Note& note : checker.notes) {
        findings.push_back(
            {position(note.spot), note.is_error, std::move(note.text), position(note.earlier)});
    }
    return findings;
}
