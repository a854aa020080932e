#include "report/content.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "base/output.h"
#include "base/text.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

Element ElementOf(RVT_Node& element, size_t platform) {
    const RVT_Node* id = FindAttribute(element, kIDId);
    return {.owner = element.IsName(tag::Platform) ? Owner::kPlatform : Owner::kConsole,
            .element = &element,
            .platform = platform,
            .name = PropertyOrEmpty(element, Property::kName),
            .id = id == nullptr ? "" : id->GetValue()};
}

Outline OutlineOf(const Inventory& inventory) {
    Outline outline = {inventory.FindSystemMap(), {}};
    if (outline.map == nullptr) {
        return outline;
    }
    Elements& items = outline.elements;
    for (RVT_Node& element : LiveElements(*outline.map, tag::Platform, tag::Console)) {
        const size_t platform = items.size();
        items.push_back(ElementOf(element, kNone));
        if (items.back().owner == Owner::kConsole) {
            continue;
        }
        for (RVT_Node& console : LiveElements(element, tag::Console)) {
            items.push_back(ElementOf(console, platform));
        }
    }
    return outline;
}

std::string_view ValueOf(const Element& item, Property property) {
    return item.element != nullptr
               ? GetPropertyValue(*item.element, property).value_or(std::string_view())
               : (*item.values)[property];
}

std::string_view KindOf(Owner owner) {
    return owner == Owner::kPlatform ? "platform" : "console";
}

std::string Label(Owner owner, std::string_view name) {
    return std::string(KindOf(owner)) + ' ' + Quoted(name);
}

std::string Label(const Element& item) {
    return Label(item.owner, item.name);
}

// Of the properties that an element can have, the first of a name is no oddity.
static bool IsProper(Owner owner, std::string_view name, std::array<bool, kPropertyCount>& seen) {
    for (const Property property : PropertiesOf(owner)) {
        bool& is_seen = seen.at(static_cast<size_t>(property));
        if (RowOf(property).name == name && !is_seen) {
            is_seen = true;
            return true;
        }
    }
    return false;
}

namespace {

// What an oddity is found in, told before it: nothing, or a word and a name.
struct Where {
    std::string_view word;
    std::optional<std::string_view> name = std::nullopt;

    [[nodiscard]] std::string Text(std::string_view more) const {
        std::string text(word);
        text += name ? ' ' + Quoted(*name) : "";
        return text.append(text.empty() || more.empty() ? "" : " ").append(more);
    }
};

// Collects what no command makes.
class Oddities {
  public:
    // All attributes of "node" but those of these names.
    void TakeAttributes(const RVT_Node& node, const Where& where,
                        std::initializer_list<NameId> proper) {
        for (const RVT_Node& attribute : Attributes(node)) {
            if (std::ranges::none_of(proper, [&](NameId id) { return attribute.IsName(id); })) {
                found_.push_back(
                    {where.Text("attribute " + Quoted(attribute.GetName())), attribute.GetValue()});
            }
        }
    }
    void TakeElement(const RVT_Node& element, const Where& where) {
        found_.push_back({where.Text("element " + Quoted(element.GetName())), XmlText(element)});
    }
    void TakeProperties(const RVT_Node& property_map, Owner owner) {
        const Where where = {"PropertyMap"};
        TakeAttributes(property_map, where, {kIDId});
        std::array<bool, kPropertyCount> seen{};
        for (const RVT_Node& child : Children(property_map)) {
            if (child.IsType(RVT_ELEMENT) && !child.IsName(kPropertyId)) {
                TakeElement(child, where);
            } else if (child.IsType(RVT_ELEMENT)) {
                TakeProperty(child, owner, seen);
            }
        }
    }
    std::vector<Oddity> Sorted() {
        std::ranges::sort(found_);
        return std::move(found_);
    }

  private:
    void TakeProperty(const RVT_Node& property, Owner owner,
                      std::array<bool, kPropertyCount>& seen) {
        const RVT_Node* called = FindAttribute(property, kNameId);
        const RVT_Node* value = FindAttribute(property, kValueId);
        const std::string_view name = called == nullptr ? "" : called->GetValue();
        const Where where = {"property", name};
        const bool is_proper = called != nullptr && IsProper(owner, name, seen);
        if (value == nullptr) {
            found_.push_back({where.Text("without a value"), ""});
        } else if (!is_proper) {
            found_.push_back({where.Text(""), value->GetValue()});
        }
        TakeAttributes(property, where, {kNameId, kReadonlyId, kTypeId, kValueId});
        for (const RVT_Node& child : Children(property)) {
            if (child.IsType(RVT_ELEMENT)) {
                TakeElement(child, where);
            }
        }
    }

    std::vector<Oddity> found_;
};

}  // namespace

// The property map and the cache are told of by themselves, consoles in a platform are elements.
static void TakeOtherElements(const Element& item, const RVT_Node* property_map,
                              const RVT_Node* cache, Oddities& oddities) {
    const bool is_platform = item.owner == Owner::kPlatform;
    for (const RVT_Node& child : Children(*item.element)) {
        const bool is_known = &child == property_map || &child == cache ||
                              (is_platform && child.IsName(tag::Console));
        if (child.IsType(RVT_ELEMENT) && !is_known) {
            oddities.TakeElement(child, {});
        }
    }
}

Content ContentOf(const Element& item) {
    Content content;
    content.values =
        item.element != nullptr ? GetPropertyValues(*item.element, item.owner) : *item.values;
    if (item.platform != kNone) {
        content.values[Property::kAddress] = {};
    }
    if (item.element == nullptr) {
        return content;
    }
    content.cache = item.owner == Owner::kPlatform ? FindCache(*item.element) : nullptr;
    const RVT_Node* property_map = FindPropertyMap(*item.element);
    Oddities oddities;
    oddities.TakeAttributes(*item.element, {}, {kIDId});
    TakeOtherElements(item, property_map, content.cache, oddities);
    if (property_map != nullptr) {
        oddities.TakeProperties(*property_map, item.owner);
    }
    content.oddities = oddities.Sorted();
    return content;
}

MapContent ContentOf(const RVT_Node* map) {
    MapContent content;
    if (map == nullptr) {
        return content;
    }
    if (const RVT_Node* security = FindAttribute(*map, security_tag); security != nullptr) {
        content.security = security->GetValue();
    }
    Oddities oddities;
    oddities.TakeAttributes(
        *map, {}, {InternName(serial_tag), InternName(security_tag), InternName(version_tag)});
    for (const RVT_Node& child : Children(*map)) {
        if (child.IsType(RVT_ELEMENT) && !child.IsName(tag::Platform) &&
            !child.IsName(tag::Console)) {
            oddities.TakeElement(child, {});
        }
    }
    content.oddities = oddities.Sorted();
    return content;
}

static bool HaveSameAttributes(const RVT_Node& one, const RVT_Node& other, bool ids_count) {
    RVT_Node_List_Elem* at_one = nullptr;
    RVT_Node_List_Elem* at_other = nullptr;
    const RVT_Node* left = one.GetFirstAttribute(at_one);
    const RVT_Node* right = other.GetFirstAttribute(at_other);
    while (left != nullptr && right != nullptr && left->HasNameOf(*right) &&
           (left->HasValueOf(*right) || (!ids_count && left->IsName(kIDId)))) {
        left = RVT_Node::GetNextAttribute(at_one);
        right = RVT_Node::GetNextAttribute(at_other);
    }
    return left == nullptr && right == nullptr;
}

static std::vector<const RVT_Node*> KeptChildren(const RVT_Node& node) {
    std::vector<const RVT_Node*> kept;
    for (const RVT_Node& child : Children(node)) {
        kept.insert(kept.end(), child.IsType(RVT_DELETED) ? 0 : 1, &child);
    }
    return kept;
}

bool IsSameTree(const RVT_Node& one, const RVT_Node& other) {
    return one.HasNameOf(other) && one.HasValueOf(other) && HaveSameAttributes(one, other, true) &&
           std::ranges::equal(KeptChildren(one), KeptChildren(other),
                              [](const RVT_Node* left, const RVT_Node* right) {
                                  return IsSameTree(*left, *right);
                              });
}

bool HaveSameCache(const Content& one, const Content& other) {
    return one.cache == nullptr || other.cache == nullptr ? one.cache == other.cache
                                                          : IsSameTree(*one.cache, *other.cache);
}

// Two property maps, node by node.
static bool AreAlikeMaps(const RVT_Node& one, const RVT_Node& other) {
    const NodeWalk left = Children(one);
    const NodeWalk right = Children(other);
    auto at_other = right.begin();
    for (const RVT_Node& child : left) {
        if (at_other == right.end() || child.HasChildren() || at_other->HasChildren() ||
            !child.IsType(RVT_ELEMENT) || !at_other->IsType(RVT_ELEMENT) ||
            !at_other->HasNameOf(child) || !HaveSameAttributes(child, *at_other, false)) {
            return false;
        }
        ++at_other;
    }
    return at_other == right.end() && HaveSameAttributes(one, other, false);
}

// Whether a platform or console has a property map and, if it is a platform, consoles alone.
static const RVT_Node* OnlyPropertyMap(const Element& item) {
    const RVT_Node* map = nullptr;
    for (const RVT_Node& child : Children(*item.element)) {
        const bool is_console = item.owner == Owner::kPlatform && child.IsName(tag::Console);
        if (child.IsType(RVT_ELEMENT) && child.IsName(tag::PropertyMap) && map == nullptr) {
            map = &child;
        } else if (!is_console && child.IsType(RVT_ELEMENT)) {
            return nullptr;
        }
    }
    return map;
}

static bool HaveSameContent(const Element& one, const Element& other) {
    const Content left = ContentOf(one);
    const Content right = ContentOf(other);
    return std::ranges::all_of(PropertiesOf(one.owner),
                               [&](Property property) {
                                   return left.values.Has(property) == right.values.Has(property) &&
                                          left.values[property] == right.values[property];
                               }) &&
           left.oddities == right.oddities && HaveSameCache(left, right);
}

bool AreAlike(const Element& one, const Element& other) {
    if (one.element == nullptr || other.element == nullptr) {
        return HaveSameContent(one, other);
    }
    const RVT_Node* left = OnlyPropertyMap(one);
    const RVT_Node* right = OnlyPropertyMap(other);
    return left != nullptr && right != nullptr && AreAlikeMaps(*left, *right) &&
           HaveSameAttributes(*one.element, *other.element, false);
}

std::string XmlText(const RVT_Node& node) {
    std::string text;
    Output out(text);
    XmlPrinter(out, false).PrintNodes(node, 0);
    static_cast<void>(out.Flush());
    return text;
}

// How a character stands in quotes; empty for one that stands there as it is.
static std::string EscapeOf(int code) {
    static constexpr std::string_view kNamed = "\"\\\t\n\r";
    const size_t at =
        code > 0 && code < 0x80 ? kNamed.find(static_cast<char>(code)) : std::string_view::npos;
    if (at != std::string_view::npos) {
        return std::string("\\") + "\"\\tnr"[at];
    }
    if (!IsControl(code)) {
        return "";
    }
    std::array<char, sizeof "\\u0000"> number{};
    static_cast<void>(
        snprintf(number.data(), number.size(), "\\u%04x", static_cast<unsigned>(code) & 0xFFFFU));
    return number.data();
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::string_view before = text;
        const std::string escape = EscapeOf(TakeCharacter(text));
        quoted += escape.empty() ? before.substr(0, before.size() - text.size()) : escape;
    }
    return quoted + '"';
}

std::string WithEscapes(std::string_view json) {
    std::string escaped;
    while (!json.empty()) {
        const std::string_view before = json;
        const int code = TakeCharacter(json);
        escaped += code >= 0x7F && IsControl(code)
                       ? EscapeOf(code)
                       : std::string(before.substr(0, before.size() - json.size()));
    }
    return escaped;
}

std::string Shortened(std::string_view text) {
    static constexpr size_t kMost = 60;
    return text.size() > kMost ? Quoted(text.substr(0, kMost)) + "..." : Quoted(text);
}
