#include "report/work.h"

#include <algorithm>

#include "base/text.h"
#include "model/checks.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

using enum Property;

static bool HasEventsWithoutLogging(const PropertyValues& values) {
    return values[kLogging] == switch_off && values[kEvents] == switch_on;
}

// Whether a console's identifier can follow its port.
static bool EndsInPort(const Element& item, std::string_view port) {
    const size_t colon = item.id.find(':');
    return colon != std::string_view::npos && item.id.substr(colon + 1) == port;
}

// A property that an element must have: all but the own address of a console inside a platform.
static bool IsNeeded(const Element& item, Property property) {
    return property != kAddress || item.platform == kNone;
}

static bool LacksProperty(const Element& item, const PropertyValues& before,
                          const PropertyValues& now) {
    return std::ranges::any_of(PropertiesOf(item.owner), [&](Property property) {
        return now.Has(property) && !before.Has(property);
    });
}

Work::Work(const Comparison& comparison)
    : comparison_(comparison),
      kept_(comparison.before().size(), false),
      unit_of_(comparison.now().size(), kNone) {
    // What is not used of it costs nothing.
    units.reserve(comparison.now().size());
    JudgeMap();
    for (size_t now = 0; now < comparison_.now().size(); ++now) {
        PlanItem(now);
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
void Work::Judge(const Element& item, Property property, std::string_view value, bool is_new) {
    const ValueKind kind = RowOf(property).kind;
    const bool must_be_given = !RowOf(property).initial;
    const Outcome form = kind == ValueKind::kName || kind == ValueKind::kAddress ||
                                 kind == ValueKind::kPort || kind == ValueKind::kTsPort
                             ? CheckForm(item.owner, property, value, files_)
                             : Outcome();
    const auto obstruct = [&](std::string_view why, ExitCode code = ExitCode::kInvalidArgument) {
        Obstruct(Label(item),
                 (std::string(RowOf(property).key) + ' ' + Shortened(value)).append(why), code);
    };
    if (!IsXmlText(value)) {
        obstruct(" holds a control character");
    } else if (kind == ValueKind::kSwitch && value != switch_on && value != switch_off) {
        obstruct(" is no switch");
    } else if (must_be_given && value.empty()) {
        obstruct(" is empty", is_new || form.ok() ? ExitCode::kInvalidArgument : form.code());
    } else if (!form.ok()) {
        Obstruct(Label(item), form.message(), form.code());
    }
}

// The next write changes what it cannot keep, also where no command sets it.
void Work::JudgeText(const Element& item, std::string_view value) {
    if (!IsReadAsWritten(value)) {
        Obstruct(Label(item), Shortened(value) + " would not be kept as it is",
                 ExitCode::kInvalidArgument);
    }
}

void Work::JudgeTexts(const Element& item, const RVT_Node& node) {
    for (const RVT_Node& attribute : Attributes(node)) {
        JudgeText(item, attribute.GetValue());
    }
    for (const RVT_Node& child : Children(node)) {
        const bool is_item = child.IsName(tag::Console) && &node == item.element;
        if (child.IsType(RVT_ELEMENT) && !is_item) {
            JudgeTexts(item, child);
        }
    }
}

bool Work::CanBeKept(size_t before, size_t now) const {
    const Element& old_item = comparison_.before()[before];
    const Element& new_item = comparison_.now()[now];
    if (!comparison_.StaysInPlace(before, now) ||
        (old_item.platform != kNone && !kept_[old_item.platform])) {
        return false;
    }
    if (AreAlike(old_item, new_item)) {
        return true;
    }
    const Content old_content = ContentOf(old_item);
    const Content new_content = ContentOf(new_item);
    const std::string_view port = old_content.values[kPort];
    const bool changes_port =
        old_item.owner == Owner::kConsole && new_content.values[kPort] != port;
    const bool gets_events =
        HasEventsWithoutLogging(new_content.values) && !HasEventsWithoutLogging(old_content.values);
    return !LacksProperty(old_item, old_content.values, new_content.values) && !gets_events &&
           std::ranges::includes(new_content.oddities, old_content.oddities) &&
           !(changes_port && !EndsInPort(old_item, port));
}

void Work::PlanItem(size_t now) {
    const Element& item = comparison_.now()[now];
    const size_t before = comparison_.PartnerOfNow(now);
    if (before == kNone || !CanBeKept(before, now)) {
        unit_of_[now] = units.size();
        units.push_back({.now = now, .settings = {}});
        PlanAddition(item, ContentOf(item));
        return;
    }
    if (item.element != nullptr) {
        JudgeTexts(item, *item.element);
    }
    kept_[before] = true;
    if (!AreAlike(comparison_.before()[before], item)) {
        PlanUpdate(before, now);
    }
}

// Whether an addition must be told a value. An element that is not logged has no events unless they
// are asked for.
static bool IsToBeTold(Property property, const PropertyValues& values) {
    const bool is_initial = RowOf(property).initial == values[property];
    const bool is_logged = values[kLogging] != switch_off;
    return property != kName && (!is_initial || (property == kEvents && !is_logged));
}

// The unit is the last one.
void Work::PlanAddition(const Element& item, const Content& content) {
    Unit& unit = units.back();
    if (item.platform != kNone && comparison_.now()[item.platform].name.empty()) {
        Obstruct(Label(item), "no command adds to a platform without a name");
    }
    for (const Property property : PropertiesOf(item.owner)) {
        JudgeText(item, content.values[property]);
    }
    if (content.cache != nullptr) {
        JudgeTexts(item, *content.cache);
    }
    for (const Property property : PropertiesOf(item.owner)) {
        const std::string_view value = content.values[property];
        if (content.values.Has(property)) {
            Judge(item, property, value, true);
            if (IsToBeTold(property, content.values)) {
                unit.settings.push_back({property, std::string(value)});
            }
        } else if (IsNeeded(item, property)) {
            Obstruct(Label(item), "no command leaves out " + std::string(RowOf(property).key),
                     ExitCode::kInvalidArgument);
        }
    }
    TakeOddities(item, {}, content.oddities);
    unit.changes_cache = content.cache != nullptr;
}

void Work::PlanUpdate(size_t before, size_t now) {
    const Element& item = comparison_.now()[now];
    const Content old_content = ContentOf(comparison_.before()[before]);
    const Content new_content = ContentOf(item);
    TakeOddities(item, old_content.oddities, new_content.oddities);
    const bool changes_cache = !HaveSameCache(old_content, new_content);
    NameValueList settings;
    for (const Property property : PropertiesOf(item.owner)) {
        const std::string_view value = new_content.values[property];
        if (old_content.values.Has(property) && !new_content.values.Has(property)) {
            Obstruct(Label(item), "no command takes away " + std::string(RowOf(property).key));
        } else if (value != old_content.values[property]) {
            Judge(item, property, value, false);
            settings.push_back({property, std::string(value)});
        }
    }
    if (changes_cache || !settings.empty()) {
        Unit& unit = units[Need(now)];
        unit.settings = std::move(settings);
        unit.changes_cache = changes_cache;
    }
}

void Work::TakeOddities(const Element& item, const std::vector<Oddity>& before,
                        const std::vector<Oddity>& now) {
    std::vector<Oddity> added;
    std::ranges::set_difference(now, before, std::back_inserter(added));
    for (const Oddity& oddity : added) {
        Obstruct(Label(item), "no command makes " + oddity.what);
    }
}

// What is inside a platform goes with it.
void Work::PlanRemovals() {
    const Elements& items = comparison_.before();
    for (size_t i = 0; i < items.size(); ++i) {
        if (kept_[i] || (items[i].platform != kNone && !kept_[items[i].platform])) {
            continue;
        }
        Step step;
        step.command.action =
            items[i].owner == Owner::kPlatform ? Action::kRemovePlatform : Action::kRemoveSystem;
        step.command.name = items[i].name;
        step.subject = Label(items[i]);
        removals.push_back(std::move(step));
    }
}

size_t Work::Need(size_t now) {
    if (unit_of_[now] == kNone) {
        Unit unit;
        unit.before = comparison_.PartnerOfNow(now);
        unit.now = now;
        const Element& item = comparison_.before()[unit.before];
        if (item.name.empty()) {
            Obstruct(Label(comparison_.now()[now]), "no command changes what has no name");
        }
        unit_of_[now] = units.size();
        units.push_back(std::move(unit));
    }
    return unit_of_[now];
}

// An address is set before the port, which is looked for at it.
void Work::Set(Unit& unit, Property property) const {
    NameValueList& settings = unit.settings;
    if (!unit.Sets(property)) {
        const Element& item = comparison_.now()[unit.now];
        const NameValue setting = {property, std::string(ValueOf(item, property))};
        settings.insert(property == kAddress ? settings.begin() : settings.end(), setting);
    }
}
