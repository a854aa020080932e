#include "model/lookups.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/arena.h"
#include "model/identifiers.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

RVT_Node* FindSystemMap(const RVT_XML_Tree& tree) {
    for (RVT_Node& node : Children(tree)) {
        if (node.IsType(RVT_ELEMENT) && node.IsName(tag::SystemMap)) {
            return &node;
        }
    }
    return nullptr;
}

RVT_Node* FindPlatform(const RVT_Node& map, std::string_view name) {
    for (RVT_Node& platform : LiveElements(map, tag::Platform)) {
        if (GetPropertyValue(platform, Property::kName) == name) {
            return &platform;
        }
    }
    return nullptr;
}

RVT_Node* FindConsole(const RVT_Node& platform, std::string_view name) {
    for (RVT_Node& console : LiveElements(platform, tag::Console)) {
        const auto console_name = GetPropertyValue(console, Property::kName);
        if (!console_name || console_name == name) {
            return console_name ? &console : nullptr;
        }
    }
    return nullptr;
}

RVT_Node* FindPropertyMap(const RVT_Node& element) {
    return LiveElements(element, tag::PropertyMap).First();
}

RVT_Node* FindCache(const RVT_Node& platform) {
    return LiveElements(platform, tag::Cache).First();
}

// Without a range: most of the time that commands take is spent here.
RVT_Node* FindAttribute(const RVT_Node& node, NameId name) {
    RVT_Node_List_Elem* pos = nullptr;
    RVT_Node* attribute = node.GetFirstAttribute(pos);
    while (attribute != nullptr && !attribute->IsName(name)) {
        attribute = RVT_Node::GetNextAttribute(pos);
    }
    return attribute;
}

RVT_Node* FindAttribute(const RVT_Node& node, std::string_view name) {
    return FindAttribute(node, InternName(name));
}

Result<RVT_Node*> FindMapAttribute(const RVT_Node& map, std::string_view name) {
    RVT_Node* attribute = FindAttribute(map, name);
    return attribute != nullptr
               ? Result(attribute)
               : Failure(ExitCode::kIncompleteMap,
                         "Cannot find the \"%s\" attribute for SystemMap.", name.data());
}

RVT_Node* FindProperty(const RVT_Node& property_map, std::string_view name) {
    for (RVT_Node& property : ElementsEvenDeleted(property_map, tag::Property)) {
        const RVT_Node* called = FindAttribute(property, kNameId);
        if (called != nullptr && called->IsValue(name)) {
            return &property;
        }
    }
    return nullptr;
}

RVT_Node* FindPropertyValue(const RVT_Node& element, Property property) {
    const RVT_Node* map = FindPropertyMap(element);
    const RVT_Node* found = map == nullptr ? nullptr : FindProperty(*map, RowOf(property).name);
    return found == nullptr ? nullptr : FindAttribute(*found, kValueId);
}

std::optional<std::string_view> GetPropertyValue(const RVT_Node& element, Property property) {
    const RVT_Node* value = FindPropertyValue(element, property);
    return value == nullptr ? std::nullopt : std::optional<std::string_view>(value->GetValue());
}

std::string_view PropertyOrEmpty(const RVT_Node& element, Property property) {
    return GetPropertyValue(element, property).value_or("");
}

// The place of the property called "name" among "properties", looked for at "guess" first; their
// number when it is none of them.
static size_t PlaceOf(std::string_view name, std::span<const Property> properties, size_t guess) {
    if (guess < properties.size() && RowOf(properties[guess]).name == name) {
        return guess;
    }
    const auto found =
        std::ranges::find(properties, name, [](Property property) { return RowOf(property).name; });
    return static_cast<size_t>(found - properties.begin());
}

PropertyValues GetPropertyValues(const RVT_Node& element, Owner owner) {
    PropertyValues values;
    const RVT_Node* map = FindPropertyMap(element);
    if (map == nullptr) {
        return values;
    }
    const std::span<const Property> properties = PropertiesOf(owner);
    std::array<bool, kPropertyCount + 1> seen{};
    size_t guess = 0;
    for (const RVT_Node& property : ElementsEvenDeleted(*map, tag::Property)) {
        const RVT_Node* called = FindAttribute(property, kNameId);
        // In the order of the list more often than not.
        const size_t place =
            called == nullptr ? properties.size() : PlaceOf(called->GetValue(), properties, guess);
        guess = place + 1;
        const RVT_Node* value = FindAttribute(property, kValueId);
        if (place < properties.size() && !seen.at(place) && value != nullptr) {
            values[properties[place]] = value->GetValue();
        }
        seen.at(place) = true;
    }
    return values;
}

Outcome PropertyMissing(const RVT_Node& element, Property property) {
    const RVT_Node* map = FindPropertyMap(element);
    if (map == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find PropertyMap in \"%s\".",
                       element.GetName().data());
    }
    const std::string_view name = RowOf(property).name;
    const RVT_Node* found = FindProperty(*map, name);
    if (found == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find Property \"name=%s\" in \"%s\".",
                       name.data(), map->GetName().data());
    }
    return Failure(ExitCode::kLookupFailed, "Cannot find attribute \"%s=\" in \"%s\".",
                   value_tag.data(), found->GetName().data());
}

void SetAttributes(RVT_Node& node,
                   std::initializer_list<std::pair<std::string_view, std::string_view>> pairs) {
    RVT_Node* attribute = node.AddAttributes(pairs.size());
    for (const auto& [name, value] : pairs) {
        attribute->SetName(name);
        attribute->SetValue(value);
        ++attribute;
    }
}

void ShareOutChildren(RVT_Node& parent,
                      const std::function<RVT_Node*(const RVT_Node& child)>& owner_of) {
    const RVT_Node_List children = parent.ReleaseChildren();
    RVT_Node_List_Elem* pos = nullptr;
    for (RVT_Node* child = children.GetFirstNode(pos); child != nullptr;) {
        // Before the child stands in another list.
        RVT_Node* next = RVT_Node_List::GetNextNode(pos);
        if (RVT_Node* owner = owner_of(*child); owner != nullptr) {
            owner->AddChild(child);
        }
        child = next;
    }
}

RVT_Node& AddElement(RVT_Node& parent, std::string_view name) {
    RVT_Node* element = RVT_Node::Create(RVT_ELEMENT);
    element->SetName(name);
    parent.AddChild(element);
    return *element;
}

void AddProperty(RVT_Node& property_map, Property property, std::string_view value,
                 bool is_boolean) {
    const PropertyRow& row = RowOf(property);
    RVT_Node& element = *RVT_Node::Create(RVT_ELEMENT);
    element.SetName(kPropertyId);
    property_map.AddChild(&element);
    RVT_Node* attribute = element.AddAttributes(is_boolean ? 4 : 3);
    const auto put = [&attribute](NameId name, const char* kept) {
        attribute->SetName(name);
        attribute->SetKeptValue(kept);
        ++attribute;
    };
    put(kNameId, row.name.data());
    put(kReadonlyId, switch_off.data());
    if (is_boolean) {
        put(kTypeId, "boolean");
    }
    // Most values are those of the table, which last.
    put(kValueId, value == row.initial ? row.initial->data() : arena::Copy(value));
}

RVT_Node& AddOwner(RVT_Node& parent, Owner owner, std::string_view id,
                   const PropertyValues& values) {
    const bool is_console = owner == Owner::kConsole;
    RVT_Node& element = AddElement(parent, is_console ? tag::Console : tag::Platform);
    SetAttributes(element, {{ID_tag, id}});
    RVT_Node& property_map = AddElement(element, tag::PropertyMap);
    SetAttributes(property_map, {{ID_tag, PropertyMapID(id)}});
    for (const Property property : PropertiesOf(owner)) {
        if (values.Has(property)) {
            AddProperty(property_map, property, values[property],
                        is_console && RowOf(property).is_boolean_in_consoles);
        }
    }
    return element;
}
