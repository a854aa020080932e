#include "model/lookups.h"

#include <algorithm>
#include <array>

#include "base/error.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

RVT_Node* FindSystemMap() {
    RVT_Node_List_Elem* pos = nullptr;
    RVT_Node* node = rvt_xml_tree.GetFirstChild(pos);
    while (node != nullptr && !(node->IsType(RVT_ELEMENT) && node->IsName(SystemMap))) {
        node = RVT_XML_Tree::GetNextChild(pos);
    }
    if (node == nullptr) {
        NoteError("Cannot find SystemMap element.");
    }
    return node;
}

RVT_Node* FindPlatform(std::string_view property, const std::string& value) {
    RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return nullptr;
    }
    for (RVT_Node& platform : LiveElements(*map, Platform)) {
        std::string_view text;
        if (GetPropertyValue(platform, property, text) == ExitCode::kOk && text == value) {
            return &platform;
        }
    }
    NoteError("Cannot find Platform \"%s\".", value.c_str());
    return nullptr;
}

RVT_Node* FindConsole(const RVT_Node& parent, std::string_view property, const std::string& value) {
    for (RVT_Node& console : LiveElements(parent, Console)) {
        std::string_view text;
        if (GetPropertyValue(console, property, text) != ExitCode::kOk) {
            return nullptr;
        }
        if (text == value) {
            return &console;
        }
    }
    NoteError("Cannot find Console \"%s\" in %s.", value.c_str(), parent.GetName().data());
    return nullptr;
}

RVT_Node* FindPropertyMap(const RVT_Node& node) {
    RVT_Node* map = LiveElements(node, PropertyMap).First();
    if (map == nullptr) {
        NoteError("Cannot find PropertyMap in \"%s\".", node.GetName().data());
    }
    return map;
}

RVT_Node* FindProperty(const RVT_Node& property_map, std::string_view name) {
    for (RVT_Node& property : ElementsEvenDeleted(property_map, Property)) {
        const RVT_Node* called = AttributeOf(property, name_tag);
        if (called != nullptr && called->IsValue(name)) {
            return &property;
        }
    }
    NoteError("Cannot find Property \"name=%s\" in \"%s\".", std::string(name).c_str(),
              property_map.GetName().data());
    return nullptr;
}

RVT_Node* FindCache(const RVT_Node& platform) {
    RVT_Node* cache = LiveElements(platform, Cache).First();
    if (cache == nullptr) {
        std::string_view name;
        static_cast<void>(GetPropertyValue(platform, NameProp, name));
        NoteError("Cannot find Cache for platform \"%s\".", std::string(name).c_str());
    }
    return cache;
}

static RVT_Node* AttributeWithName(const RVT_Node& node, NameId name) {
    RVT_Node_List_Elem* pos = nullptr;
    RVT_Node* attribute = node.GetFirstAttribute(pos);
    while (attribute != nullptr && !attribute->IsName(name)) {
        attribute = RVT_Node::GetNextAttribute(pos);
    }
    return attribute;
}

RVT_Node* AttributeOf(const RVT_Node& node, std::string_view name) {
    return AttributeWithName(node, InternName(name));
}

static RVT_Node* FindAttributeWithName(const RVT_Node& node, NameId name) {
    RVT_Node* attribute = AttributeWithName(node, name);
    if (attribute == nullptr) {
        NoteError("Cannot find attribute \"%s=\" in \"%s\".", NameText(name).data(),
                  node.GetName().data());
    }
    return attribute;
}

RVT_Node* FindAttribute(const RVT_Node& node, std::string_view name) {
    return FindAttributeWithName(node, InternName(name));
}

RVT_Node* FindPropertyValue(const RVT_Node& node, std::string_view name) {
    const RVT_Node* map = FindPropertyMap(node);
    const RVT_Node* property = map == nullptr ? nullptr : FindProperty(*map, name);
    return property == nullptr ? nullptr : FindAttribute(*property, value_tag);
}

ExitCode GetPropertyValue(const RVT_Node& node, std::string_view name, std::string_view& value) {
    const RVT_Node* attribute = FindPropertyValue(node, name);
    if (attribute == nullptr) {
        return ExitCode::kLookupFailed;
    }
    value = attribute->GetValue();
    return ExitCode::kOk;
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

ExitCode GetPropertyValues(const RVT_Node& node, std::span<const std::string_view> names,
                           std::span<std::string_view> values) {
    const RVT_Node* map = FindPropertyMap(node);
    if (map == nullptr) {
        return ExitCode::kLookupFailed;
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
        const RVT_Node* property =
            found.at(i) != nullptr ? found.at(i) : FindProperty(*map, names[i]);
        const RVT_Node* value =
            property == nullptr ? nullptr : FindAttributeWithName(*property, kValue);
        if (value == nullptr) {
            return ExitCode::kLookupFailed;
        }
        values[i] = value->GetValue();
    }
    return ExitCode::kOk;
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
