#include "plan/content.h"

#include <algorithm>
#include <array>

#include "base/output.h"
#include "base/quoted.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

PropertyValues ComparedValues(const Element& element) {
    PropertyValues values = element.values;
    if (element.parent != nullptr) {
        values[Property::kAddress] = {};
    }
    return values;
}

// A node with all below it, as it is in a map.
static std::string XmlText(const RVT_Node& node) {
    std::string text;
    Output out(text);
    XmlPrinter(out, false).PrintNodes(node, 0);
    static_cast<void>(out.Flush());
    return text;
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

std::string Join(const std::string& one, const std::string& other) {
    return one + (one.empty() || other.empty() ? "" : " ") + other;
}

// Collects what no command makes.
class Oddities {
  public:
    // All attributes of "node" but the proper ones; "where" says what the node is, empty for an
    // element itself.
    void TakeAttributes(const RVT_Node& node, const std::string& where,
                        std::initializer_list<NameId> proper) {
        for (const RVT_Node& attribute : Attributes(node)) {
            if (std::ranges::none_of(proper, [&](NameId id) { return attribute.IsName(id); })) {
                found_.push_back({Join(where, "attribute " + Quoted(attribute.GetName())),
                                  attribute.GetValue()});
            }
        }
    }
    void TakeElement(const RVT_Node& element, const std::string& where) {
        found_.push_back({Join(where, "element " + Quoted(element.GetName())), XmlText(element)});
    }
    void TakeProperties(const RVT_Node& property_map, Owner owner) {
        TakeAttributes(property_map, "PropertyMap", {kIDId});
        std::array<bool, kPropertyCount> seen{};
        for (const RVT_Node& child : Children(property_map)) {
            if (child.IsType(RVT_ELEMENT) && !child.IsName(kPropertyId)) {
                TakeElement(child, "PropertyMap");
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
        const std::string where = "property " + Quoted(name);
        const bool is_proper = called != nullptr && IsProper(owner, name, seen);
        if (value == nullptr) {
            found_.push_back({where + " without a value", ""});
        } else if (!is_proper) {
            found_.push_back({where, value->GetValue()});
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

static bool HasOnlyAttributes(const RVT_Node& node, std::initializer_list<NameId> names) {
    for (const RVT_Node& attribute : Attributes(node)) {
        if (std::ranges::none_of(names, [&](NameId name) { return attribute.IsName(name); })) {
            return false;
        }
    }
    return true;
}

// Whether the properties in a map are one for each value, and nothing else.
static bool HasOnlyProperties(const RVT_Node& property_map, const PropertyValues& values) {
    size_t count = 0;
    for (const RVT_Node& child : Children(property_map)) {
        if (child.IsType(RVT_ELEMENT)) {
            if (!child.IsName(kPropertyId) || child.HasChildren() ||
                !HasOnlyAttributes(child, {kNameId, kReadonlyId, kValueId, kTypeId})) {
                return false;
            }
            ++count;
        }
    }
    return count == values.Count();
}

// Whether an element has values and, if it is a platform, consoles alone.
static bool HasOnlyValues(const Element& element) {
    if (element.node == nullptr) {
        return true;
    }
    const RVT_Node* map = nullptr;
    for (const RVT_Node& child : Children(*element.node)) {
        const bool is_console = element.owner == Owner::kPlatform && child.IsName(tag::Console);
        if (child.IsType(RVT_ELEMENT) && child.IsName(tag::PropertyMap) && map == nullptr) {
            map = &child;
        } else if (!is_console && child.IsType(RVT_ELEMENT)) {
            return false;
        }
    }
    return map != nullptr && HasOnlyProperties(*map, element.values) &&
           HasOnlyAttributes(*map, {kIDId}) && HasOnlyAttributes(*element.node, {kIDId});
}

// Most elements have nothing else, which is found out faster than what else there is.
Content ContentOf(const Element& element) {
    if (HasOnlyValues(element)) {
        return {};
    }
    const bool is_platform = element.owner == Owner::kPlatform;
    const RVT_Node* cache = is_platform ? FindCache(*element.node) : nullptr;
    const RVT_Node* property_map = FindPropertyMap(*element.node);
    Oddities oddities;
    oddities.TakeAttributes(*element.node, "", {kIDId});
    for (const RVT_Node& child : Children(*element.node)) {
        const bool is_known = &child == property_map || &child == cache ||
                              (is_platform && child.IsName(tag::Console));
        if (child.IsType(RVT_ELEMENT) && !is_known) {
            oddities.TakeElement(child, "");
        }
    }
    if (property_map != nullptr) {
        oddities.TakeProperties(*property_map, element.owner);
    }
    return {cache == nullptr ? "" : XmlText(*cache), oddities.Sorted()};
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
        *map, "", {InternName(serial_tag), InternName(security_tag), InternName(version_tag)});
    for (const RVT_Node& child : Children(*map)) {
        if (child.IsType(RVT_ELEMENT) && !child.IsName(tag::Platform) &&
            !child.IsName(tag::Console)) {
            oddities.TakeElement(child, "");
        }
    }
    content.oddities = oddities.Sorted();
    return content;
}

bool AreAlike(const Element& one, const Element& other) {
    return ComparedValues(one) == ComparedValues(other) &&
           (one.node == other.node || ContentOf(one) == ContentOf(other));
}
