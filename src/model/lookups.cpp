#include "model/lookups.h"

#include <algorithm>
#include <array>

#include "model/vocabulary.h"
#include "xml/walk.h"

RVT_Node* FindSystemMap() {
    RVT_Node_List_Elem* pos = nullptr;
    RVT_Node* node = rvt_xml_tree.GetFirstChild(pos);
    while (node != nullptr && !(node->IsType(RVT_ELEMENT) && node->IsName(SystemMap))) {
        node = RVT_XML_Tree::GetNextChild(pos);
    }
    return node;
}

RVT_Node* FindPlatform(std::string_view name) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return nullptr;
    }
    for (RVT_Node& platform : LiveElements(*map, Platform)) {
        if (GetPropertyValue(platform, NameProp) == name) {
            return &platform;
        }
    }
    return nullptr;
}

RVT_Node* FindConsole(const RVT_Node& platform, std::string_view name) {
    for (RVT_Node& console : LiveElements(platform, Console)) {
        const auto console_name = GetPropertyValue(console, NameProp);
        if (!console_name) {
            return nullptr;
        }
        if (console_name == name) {
            return &console;
        }
    }
    return nullptr;
}

RVT_Node* FindPropertyMap(const RVT_Node& element) {
    return LiveElements(element, PropertyMap).First();
}

RVT_Node* FindProperty(const RVT_Node& property_map, std::string_view name) {
    for (RVT_Node& property : ElementsEvenDeleted(property_map, Property)) {
        const RVT_Node* called = FindAttribute(property, name_tag);
        if (called != nullptr && called->IsValue(name)) {
            return &property;
        }
    }
    return nullptr;
}

RVT_Node* FindCache(const RVT_Node& platform) {
    return LiveElements(platform, Cache).First();
}

static RVT_Node* AttributeWithName(const RVT_Node& node, NameId name) {
    RVT_Node_List_Elem* pos = nullptr;
    RVT_Node* attribute = node.GetFirstAttribute(pos);
    while (attribute != nullptr && !attribute->IsName(name)) {
        attribute = RVT_Node::GetNextAttribute(pos);
    }
    return attribute;
}

RVT_Node* FindAttribute(const RVT_Node& node, std::string_view name) {
    return AttributeWithName(node, InternName(name));
}

RVT_Node* FindPropertyValue(const RVT_Node& element, std::string_view name) {
    const RVT_Node* map = FindPropertyMap(element);
    const RVT_Node* property = map == nullptr ? nullptr : FindProperty(*map, name);
    return property == nullptr ? nullptr : FindAttribute(*property, value_tag);
}

std::optional<std::string_view> GetPropertyValue(const RVT_Node& element, std::string_view name) {
    const RVT_Node* value = FindPropertyValue(element, name);
    return value == nullptr ? std::nullopt : std::optional<std::string_view>(value->GetValue());
}

// The place of "name" among "names", looked for at "guess" first; names.size() when it is not
// there.
static size_t PlaceOf(std::string_view name, std::span<const std::string_view> names,
                      size_t guess) {
    if (guess < names.size() && names[guess] == name) {
        return guess;
    }
    return static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

Outcome GetPropertyValues(const RVT_Node& element, std::span<const std::string_view> names,
                          std::span<std::string_view> values) {
    const RVT_Node* map = FindPropertyMap(element);
    if (map == nullptr) {
        return PropertyMissing(element, names.front());
    }
    static const NameId kName = InternName(name_tag);
    static const NameId kValue = InternName(value_tag);
    std::array<const RVT_Node*, kMostProperties + 1> found{};
    size_t place = 0;
    for (const RVT_Node& property : ElementsEvenDeleted(*map, Property)) {
        const RVT_Node* called = AttributeWithName(property, kName);
        place = called == nullptr ? names.size() : PlaceOf(called->GetValue(), names, place + 1);
        if (found.at(place) == nullptr) {
            found.at(place) = &property;
        }
    }
    for (size_t i = 0; i < names.size(); ++i) {
        const RVT_Node* property = found.at(i);
        const RVT_Node* value =
            property == nullptr ? nullptr : AttributeWithName(*property, kValue);
        if (value == nullptr) {
            return PropertyMissing(element, names[i]);
        }
        values[i] = value->GetValue();
    }
    return {};
}

Outcome SystemMapMissing(ExitCode code) {
    return {code, "Cannot find SystemMap element."};
}

Outcome PlatformMissing(std::string_view name) {
    if (FindSystemMap() == nullptr) {
        return SystemMapMissing(ExitCode::kLookupFailed);
    }
    return Failure(ExitCode::kLookupFailed, "Cannot find Platform \"%s\".",
                   std::string(name).c_str());
}

Outcome PropertyMissing(const RVT_Node& element, std::string_view name) {
    const RVT_Node* map = FindPropertyMap(element);
    if (map == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find PropertyMap in \"%s\".",
                       element.GetName().data());
    }
    const RVT_Node* property = FindProperty(*map, name);
    if (property == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find Property \"name=%s\" in \"%s\".",
                       std::string(name).c_str(), map->GetName().data());
    }
    return Failure(ExitCode::kLookupFailed, "Cannot find attribute \"%s=\" in \"%s\".",
                   value_tag.data(), property->GetName().data());
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

RVT_Node& AddElement(RVT_Node& parent, std::string_view name) {
    RVT_Node* element = RVT_Node::Create(RVT_ELEMENT);
    element->SetName(name);
    parent.AddChild(element);
    return *element;
}
