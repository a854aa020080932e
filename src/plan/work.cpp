#include "plan/work.h"

#include <algorithm>

#include "base/quoted.h"
#include "base/text.h"
#include "model/checks.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/parsed_text.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

using enum Property;

static bool HasEventsWithoutLogging(const PropertyValues& values) {
    return values[kLogging] == switch_off && values[kEvents] == switch_on;
}

static bool LacksProperty(const PropertyValues& before, const PropertyValues& now) {
    return std::ranges::any_of(kPropertyTable, [&](const PropertyRow& row) {
        return now.Has(row.property) && !before.Has(row.property);
    });
}

// The tables are as long as an index of an element can be.
static size_t SizeFor(const Elements& elements) {
    return elements.empty() ? 0 : elements.back()->index + 1;
}

Work::Work(const Comparison& comparison)
    : comparison_(comparison),
      kept_(SizeFor(comparison.before()), false),
      unit_of_(SizeFor(comparison.now()), kNone) {
    // What is not used of it costs nothing.
    units.reserve(comparison.now().size());
    JudgeMap();
    for (const Element* now : comparison_.now()) {
        PlanElement(*now);
    }
    PlanRemovals();
}

void Work::Obstruct(const std::string& subject, std::string text, ExitCode code) {
    std::ranges::replace(text, '\n', ' ');
    obstacles.push_back({subject, std::move(text), code});
}

void Work::JudgeMap() {
    const MapContent& before = comparison_.map_before();
    const MapContent& now = comparison_.map_now();
    if (before.security != now.security &&
        (!now.security || !before.security ||
         (*now.security != switch_on && *now.security != switch_off))) {
        Obstruct("map", "no command makes security " +
                            (now.security ? Quoted(*now.security) : "none") + " of " +
                            (before.security ? Quoted(*before.security) : "none"));
    }
    std::vector<Oddity> differing;
    std::ranges::set_symmetric_difference(before.oddities, now.oddities,
                                          std::back_inserter(differing));
    for (const Oddity& oddity : differing) {
        Obstruct("map", "no command makes or removes " + oddity.what);
    }
}

// A value that a command is to set. Reference files are looked at when it runs.
void Work::Judge(const Element& element, Property property, std::string_view value, bool is_new) {
    const ValueKind kind = RowOf(property).kind;
    const bool must_be_given = !RowOf(property).initial;
    const Outcome form = kind == ValueKind::kName || kind == ValueKind::kAddress ||
                                 kind == ValueKind::kPort || kind == ValueKind::kTsPort
                             ? CheckForm(element.owner, property, value, files_)
                             : Outcome();
    const auto obstruct = [&](std::string_view why, ExitCode code = ExitCode::kInvalidArgument) {
        Obstruct(Label(element),
                 (std::string(RowOf(property).key) + ' ' + Shortened(value)).append(why), code);
    };
    if (!IsXmlText(value)) {
        obstruct(" holds a control character");
    } else if (kind == ValueKind::kSwitch && value != switch_on && value != switch_off) {
        obstruct(" is no switch");
    } else if (must_be_given && value.empty()) {
        obstruct(" is empty", is_new || form.ok() ? ExitCode::kInvalidArgument : form.code());
    } else if (!form.ok()) {
        Obstruct(Label(element), form.message(), form.code());
    }
}

// The next write changes what it cannot keep, also where no command sets it.
void Work::JudgeText(const Element& element, std::string_view value) {
    if (!IsReadAsWritten(value)) {
        Obstruct(Label(element), Shortened(value) + " would not be kept as it is",
                 ExitCode::kInvalidArgument);
    }
}

void Work::JudgeValues(const Element& element, const PropertyValues& values) {
    for (const Property property : PropertiesOf(element.owner)) {
        JudgeText(element, values[property]);
    }
}

// All texts of a node, and of what is below it, but those of values.
void Work::JudgeTexts(const Element& element, const RVT_Node& node, bool is_property) {
    if (AreParsedValuesAsWritten()) {
        return;
    }
    for (const RVT_Node& attribute : Attributes(node)) {
        if (!is_property || !attribute.IsName(kValueId)) {
            JudgeText(element, attribute.GetValue());
        }
    }
    const RVT_Node* property_map = FindPropertyMap(*element.node);
    for (const RVT_Node& child : Children(node)) {
        const bool is_console = child.IsName(tag::Console) && &node == element.node;
        if (child.IsType(RVT_ELEMENT) && !is_console) {
            JudgeTexts(element, child, &node == property_map);
        }
    }
}

bool Work::CanBeKept(const Element& before, const Element& now) const {
    if (!comparison_.StaysInPlace(before, now) ||
        (before.parent != nullptr && !IsKept(*before.parent))) {
        return false;
    }
    if (AreAlike(before, now)) {
        return true;
    }
    const std::string_view port = before.values[kPort];
    const bool changes_port = before.owner == Owner::kConsole && now.values[kPort] != port;
    const bool gets_events =
        HasEventsWithoutLogging(now.values) && !HasEventsWithoutLogging(before.values);
    return !LacksProperty(ComparedValues(before), ComparedValues(now)) && !gets_events &&
           std::ranges::includes(ContentOf(now).oddities, ContentOf(before).oddities) &&
           !(changes_port && !EndsInPort(before.id, port));
}

void Work::PlanElement(const Element& now) {
    const Element* before = comparison_.Before(now);
    if (before == nullptr || !CanBeKept(*before, now)) {
        PlanAddition(now);
        return;
    }
    kept_[before->index] = true;
    JudgeValues(now, now.values);
    if (now.node != nullptr) {
        JudgeTexts(now, *now.node);
    }
    if (!AreAlike(*before, now)) {
        PlanUpdate(*before, now);
    }
}

// Whether an addition must be told a value. An element that is not logged has no events unless they
// are asked for.
static bool IsToBeTold(Property property, const PropertyValues& values) {
    const bool is_initial = RowOf(property).initial == values[property];
    const bool is_logged = values[kLogging] != switch_off;
    return property != kName && (!is_initial || (property == kEvents && !is_logged));
}

void Work::PlanAddition(const Element& now) {
    const Content content = ContentOf(now);
    const PropertyValues values = ComparedValues(now);
    Unit unit = {.now = &now, .changes_cache = !content.cache.empty()};
    if (now.parent != nullptr && now.parent->Name().empty()) {
        Obstruct(Label(now), "no command adds to a platform without a name");
    }
    JudgeValues(now, values);
    if (unit.changes_cache) {
        JudgeTexts(now, *FindCache(*now.node));
    }
    for (const Property property : PropertiesOf(now.owner)) {
        if (values.Has(property)) {
            Judge(now, property, values[property], true);
            if (IsToBeTold(property, values)) {
                unit.settings.push_back({property, std::string(values[property])});
            }
        } else if (property != kAddress || now.parent == nullptr) {
            Obstruct(Label(now), "no command leaves out " + std::string(RowOf(property).key),
                     ExitCode::kInvalidArgument);
        }
    }
    TakeOddities(now, {}, content.oddities);
    unit_of_[now.index] = units.size();
    units.push_back(std::move(unit));
}

void Work::PlanUpdate(const Element& before, const Element& now) {
    const Content old_content = ContentOf(before);
    const Content new_content = ContentOf(now);
    TakeOddities(now, old_content.oddities, new_content.oddities);
    const PropertyValues old_values = ComparedValues(before);
    const PropertyValues new_values = ComparedValues(now);
    NameValueList settings;
    for (const Property property : PropertiesOf(now.owner)) {
        const std::string_view value = new_values[property];
        if (old_values.Has(property) && !new_values.Has(property)) {
            Obstruct(Label(now), "no command takes away " + std::string(RowOf(property).key));
        } else if (value != old_values[property]) {
            Judge(now, property, value, false);
            settings.push_back({property, std::string(value)});
        }
    }
    const bool changes_cache = old_content.cache != new_content.cache;
    if (changes_cache || !settings.empty()) {
        Unit& unit = units[Need(now)];
        unit.settings = std::move(settings);
        unit.changes_cache = changes_cache;
    }
}

void Work::TakeOddities(const Element& element, const std::vector<Oddity>& before,
                        const std::vector<Oddity>& now) {
    std::vector<Oddity> added;
    std::ranges::set_difference(now, before, std::back_inserter(added));
    for (const Oddity& oddity : added) {
        Obstruct(Label(element), "no command makes " + oddity.what);
    }
}

// What is inside a platform goes with it.
void Work::PlanRemovals() {
    for (const Element* before : comparison_.before()) {
        if (IsKept(*before) || (before->parent != nullptr && !IsKept(*before->parent))) {
            continue;
        }
        Step step;
        step.command.action =
            before->owner == Owner::kPlatform ? Action::kRemovePlatform : Action::kRemoveSystem;
        step.command.name = before->Name();
        step.subject = Label(*before);
        removals.push_back(std::move(step));
    }
}

size_t Work::Need(const Element& now) {
    size_t& unit = unit_of_[now.index];
    if (unit == kNone) {
        unit = units.size();
        units.push_back({.before = comparison_.Before(now), .now = &now});
        if (units.back().before->Name().empty()) {
            Obstruct(Label(now), "no command changes what has no name");
        }
    }
    return unit;
}

// An address is set before the port, which is looked for at it.
void Work::Set(Unit& unit, Property property) {
    NameValueList& settings = unit.settings;
    if (!unit.Sets(property)) {
        const NameValue setting = {property, std::string(unit.now->values[property])};
        settings.insert(property == kAddress ? settings.begin() : settings.end(), setting);
    }
}
