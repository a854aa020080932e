#include "report/check.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "base/text.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/validation.h"
#include "model/vocabulary.h"
#include "report/content.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

namespace {

// One platform or console that is looked at, and what is around it.
struct Subject {
    const RVT_Node& element;
    Owner owner;
    const Subject* around;  // the platform, or standalone console, that a console is inside of
    PropertyValues values;
    const RVT_Node* property_map;

    [[nodiscard]] bool IsInPlatform() const {
        return around != nullptr && around->owner == Owner::kPlatform;
    }
    // Of a console inside another element that one's.
    [[nodiscard]] std::string_view Address() const {
        return (around == nullptr ? values : around->values)[Property::kAddress];
    }
    [[nodiscard]] std::string Name() const {
        const char* const kind = owner == Owner::kPlatform ? "platform " : "console ";
        const RVT_Node* id = FindAttribute(element, kIDId);
        static constexpr size_t kLongest = 200;
        return kind + Printable(values.Has(Property::kName) ? values[Property::kName]
                                : id != nullptr             ? id->GetValue()
                                                            : "without a name",
                                kLongest);
    }
};

// Who uses something that may be used once, and the start tag that says so.
struct User {
    std::string name;
    const RVT_Node* tag;
    bool is_platform;
};

class Checker {
  public:
    Checker(const RVT_Node& map, Says says) : map_(map), says_(says) {}

    void Run() {
        CheckMap();
        for (const RVT_Node& element : LiveElements(map_, tag::Platform, tag::Console)) {
            const Subject subject = SubjectOf(element, nullptr);
            CheckElement(subject);
            for (const RVT_Node& console : LiveElements(element, tag::Console)) {
                CheckElement(SubjectOf(console, &subject));
            }
        }
    }

    // What was found, with the tags that it is about.
    struct Note {
        const RVT_Node* tag;
        const RVT_Node* earlier;
        bool is_error;
        std::string text;
    };
    std::vector<Note> notes;

  private:
    static Subject SubjectOf(const RVT_Node& element, const Subject* around) {
        const Owner owner = element.IsName(tag::Platform) ? Owner::kPlatform : Owner::kConsole;
        return {element, owner, around, GetPropertyValues(element, owner),
                FindPropertyMap(element)};
    }

    void Error(const RVT_Node& tag, std::string text, const RVT_Node* earlier = nullptr) {
        notes.push_back({&tag, earlier, true, std::move(text)});
    }
    void Warning(const RVT_Node& tag, std::string text, const RVT_Node* earlier = nullptr) {
        notes.push_back({&tag, earlier, false, std::move(text)});
    }
    void ErrorIfNot(const Outcome& outcome, const RVT_Node& tag, const std::string& subject) {
        if (!outcome.ok()) {
            std::string text = outcome.message();
            std::ranges::replace(text, '\n', ' ');
            Error(tag, subject + ": " + text);
        }
    }

    // The start tag of a property, or of the element that lacks it.
    static const RVT_Node& TagOf(const Subject& subject, Property property) {
        const RVT_Node* found = subject.property_map == nullptr
                                    ? nullptr
                                    : FindProperty(*subject.property_map, RowOf(property).name);
        return found == nullptr ? subject.element : *found;
    }

    void CheckMap() {
        const Result<long> serial = ReadSerial(map_);
        ErrorIfNot(serial.outcome(), map_, "map");
        const auto expect = [this](std::string_view name, auto is_right) {
            const Result<RVT_Node*> attribute = FindMapAttribute(map_, name);
            ErrorIfNot(attribute.outcome(), map_, "map");
            if (attribute.ok() && !is_right(std::string_view((*attribute)->GetValue()))) {
                Error(map_,
                      "map: " + std::string(name) + " is \"" + (*attribute)->GetValue() + "\"");
            }
        };
        expect(security_tag, [](std::string_view v) { return v == switch_on || v == switch_off; });
        expect(version_tag, [](std::string_view v) { return v == systemmap_version; });
        serial_ = serial.ok() ? *serial : 0;
    }

    void CheckElement(const Subject& subject) {
        if (says_ == Says::kAll) {
            CheckID(subject);
        }
        if (subject.property_map == nullptr) {
            Error(subject.element, subject.Name() + ": no property map");
            return;
        }
        CheckPropertyMaps(subject);
        for (const Property property : PropertiesOf(subject.owner)) {
            CheckValue(subject, property);
        }
        CheckTogether(subject);
        CheckUses(subject);
    }

    // Each property once, and only those that the element has.
    void CheckPropertyMaps(const Subject& subject) {
        std::map<std::string_view, const RVT_Node*> seen;
        for (const RVT_Node& map : LiveElements(subject.element, tag::PropertyMap)) {
            if (&map != subject.property_map) {
                Error(map, subject.Name() + ": a second property map", subject.property_map);
            }
        }
        for (const RVT_Node& property : LiveElements(*subject.property_map, tag::Property)) {
            const RVT_Node* called = FindAttribute(property, kNameId);
            const std::string_view name = called == nullptr ? "" : called->GetValue();
            const auto [known, is_new] = seen.emplace(name, &property);
            const std::string quoted = "property \"" + std::string(name) + "\"";
            if (!IsOf(subject.owner, name)) {
                Error(property, subject.Name() + ": " + quoted + " does not belong here");
            } else if (!is_new) {
                Error(property, subject.Name() + ": " + quoted + " twice", known->second);
            }
        }
    }
    static bool IsOf(Owner owner, std::string_view name) {
        return std::ranges::any_of(PropertiesOf(owner), [name](Property property) {
            return RowOf(property).name == name;
        });
    }

    void CheckValue(const Subject& subject, Property property) {
        if (!subject.values.Has(property)) {
            if (says_ == Says::kAll) {
                Error(TagOf(subject, property),
                      subject.Name() + ": " + PropertyMissing(subject.element, property).message());
            }
            return;
        }
        const std::string_view value = subject.values[property];
        const RVT_Node& tag = TagOf(subject, property);
        if (RowOf(property).kind == ValueKind::kSwitch) {
            if (value != switch_on && value != switch_off) {
                Error(tag, subject.Name() + ": " + std::string(RowOf(property).name) + " is \"" +
                               std::string(value) + "\", neither true nor false");
            }
            return;
        }
        if (property == Property::kName && value.empty()) {
            Error(tag, subject.Name() + ": the name is empty");
        }
        if (says_ != Says::kAll && !IsReadAsWritten(value)) {
            Error(tag, subject.Name() + ": " + Shortened(value) + " would not be kept as it is");
        }
        ErrorIfNot(Verdict(subject.owner, property, value), tag, subject.Name());
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
    void CheckTogether(const Subject& subject) {
        const PropertyValues& values = subject.values;
        const bool is_platform = subject.owner == Owner::kPlatform;
        const Outcome switches =
            CheckEventsHaveLogging(values[Property::kLogging], values[Property::kEvents]);
        if (!switches.ok()) {
            notes.push_back({&TagOf(subject, Property::kLogging), nullptr, !is_platform,
                             subject.Name() + ": " + switches.message()});
        }
        if (is_platform && values.Has(Property::kFirstTsPort) &&
            values.Has(Property::kLastTsPort)) {
            ErrorIfNot(
                CheckPortRange(values[Property::kFirstTsPort], values[Property::kLastTsPort]),
                TagOf(subject, Property::kLastTsPort), subject.Name());
        }
        if (subject.IsInPlatform() && values.Has(Property::kAddress) &&
            values[Property::kAddress] != subject.Address()) {
            Warning(TagOf(subject, Property::kAddress),
                    subject.Name() + ": its address " + std::string(values[Property::kAddress]) +
                        " is not its platform's, " + std::string(subject.Address()));
        }
    }

    // Names, addresses and ports may be used once. What is inside a standalone console counts
    // nowhere.
    void CheckUses(const Subject& subject) {
        if (subject.around != nullptr && !subject.IsInPlatform()) {
            return;
        }
        if (subject.values.Has(Property::kName)) {
            CheckName(subject);
        }
        if (subject.Address().data() == nullptr) {
            return;
        }
        if (!subject.IsInPlatform()) {
            CheckAddress(subject);
        }
        if (subject.values.Has(Property::kPort)) {
            CheckPort(subject);
        }
    }
    void CheckName(const Subject& subject) {
        const std::string name(subject.values[Property::kName]);
        const RVT_Node& tag = TagOf(subject, Property::kName);
        const auto [user, is_new] = names_.emplace(ToLower(name), UserOf(subject, tag));
        if (!is_new) {
            Error(tag, subject.Name() + ": the name is in use by " + user->second.name,
                  user->second.tag);
        }
    }
    // Platforms alone have an address for themselves.
    void CheckAddress(const Subject& subject) {
        const std::string address(subject.Address());
        const RVT_Node& tag = TagOf(subject, Property::kAddress);
        const bool is_platform = subject.owner == Owner::kPlatform;
        std::vector<User>& users = addresses_[address];
        const auto platform = std::ranges::find_if(users, &User::is_platform);
        const auto other = is_platform && platform == users.end() ? users.begin() : platform;
        if (other != users.end()) {
            notes.push_back(
                {&tag, other->tag, is_platform && other->is_platform,
                 subject.Name() + ": address " + address + " is in use by " + other->name});
        }
        if (users.empty() || is_platform) {
            users.push_back(UserOf(subject, tag));
        }
    }
    void CheckPort(const Subject& subject) {
        const std::string address(subject.Address());
        const std::string port(subject.values[Property::kPort]);
        const RVT_Node& tag = TagOf(subject, Property::kPort);
        const auto [user, is_new] = ports_.emplace(address + ' ' + port, UserOf(subject, tag));
        if (!is_new) {
            Error(tag,
                  subject.Name() + ": port " + port + " is in use at " + address + " by " +
                      user->second.name,
                  user->second.tag);
        }
    }
    static User UserOf(const Subject& subject, const RVT_Node& tag) {
        return {std::string(subject.values[Property::kName]), &tag,
                subject.owner == Owner::kPlatform};
    }

    // 7, 7:2003 of its console at port 2003, 12:2005 of a standalone one, each with its .pmap.
    void CheckID(const Subject& subject) {
        const Result<std::string_view> id = ReadID(subject.element);
        if (!id.ok()) {
            Error(subject.element, subject.Name() + ": no identifier");
            return;
        }
        const std::string text(*id);
        const auto [user, is_new] = ids_.emplace(text, &subject.element);
        if (!is_new) {
            Error(subject.element, subject.Name() + ": identifier " + text + " twice",
                  user->second);
        }
        if (!HasFormOfID(subject, text)) {
            Error(subject.element, subject.Name() + ": identifier \"" + text +
                                       "\" is not of its form, or not below the serial");
        }
        const RVT_Node* map_id =
            subject.property_map == nullptr ? nullptr : FindAttribute(*subject.property_map, kIDId);
        if (subject.property_map != nullptr &&
            (map_id == nullptr || !map_id->IsValue(PropertyMapID(text)))) {
            Error(*subject.property_map,
                  subject.Name() + ": the property map's identifier is not " + PropertyMapID(text));
        }
    }
    [[nodiscard]] bool HasFormOfID(const Subject& subject, const std::string& id) const {
        if (subject.owner == Owner::kPlatform) {
            return IsBelowSerial(id);
        }
        const size_t colon = std::min(id.find(':'), id.size());
        const std::string owner = id.substr(0, colon);
        const bool has_port = !subject.values.Has(Property::kPort) ||
                              id == ConsoleID(owner, subject.values[Property::kPort]);
        if (subject.around == nullptr) {
            return has_port && IsBelowSerial(owner);
        }
        const Result<std::string_view> around = ReadID(subject.around->element);
        return has_port && (!subject.IsInPlatform() || !around.ok() || owner == *around);
    }
    [[nodiscard]] bool IsBelowSerial(const std::string& number) const {
        return IsValidPortNumber(number) &&
               (serial_ == 0 ||
                (number.size() < 20 && strtol(number.c_str(), nullptr, 10) < serial_));
    }

    const RVT_Node& map_;
    Says says_;
    long serial_ = 0;  // 0 when the map has none
    ReferenceFiles files_;
    std::map<std::pair<ValueKind, Owner>, std::unordered_map<std::string_view, Outcome>> verdicts_;
    std::unordered_map<std::string, User> names_;
    std::unordered_map<std::string, std::vector<User>> addresses_;
    std::unordered_map<std::string, User> ports_;
    std::unordered_map<std::string, const RVT_Node*> ids_;
};

// Numbers the start tags that notes are about.
class Numbering {
  public:
    explicit Numbering(const std::vector<Checker::Note>& notes) {
        for (const Checker::Note& note : notes) {
            numbers_[note.tag] = 0;
            numbers_[note.earlier] = 0;
        }
    }
    void Count(const NodeWalk& nodes) {
        for (const RVT_Node& node : nodes) {
            if (node.IsType(RVT_ELEMENT)) {
                ++count_;
                const auto wanted = numbers_.find(&node);
                if (wanted != numbers_.end()) {
                    wanted->second = count_;
                }
                Count(Children(node));
            }
        }
    }
    [[nodiscard]] size_t Of(const RVT_Node* tag) const { return numbers_.at(tag); }

  private:
    std::unordered_map<const RVT_Node*, size_t> numbers_;
    size_t count_ = 0;
};

}  // namespace

std::vector<Finding> Check(Inventory& inventory, Says says) {
    Checker checker(*inventory.FindSystemMap(), says);
    checker.Run();
    std::vector<Finding> findings;
    if (checker.notes.empty()) {
        return findings;
    }
    Numbering numbering(checker.notes);
    numbering.Count(Children(inventory.Tree()));
    for (Checker::Note& note : checker.notes) {
        findings.push_back({numbering.Of(note.tag), note.is_error, std::move(note.text),
                            note.earlier == nullptr ? 0 : numbering.Of(note.earlier)});
    }
    std::ranges::stable_sort(findings, {}, &Finding::element);
    return findings;
}
