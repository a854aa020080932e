#include "inventory/completion.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/arena.h"
#include "base/quoted.h"
#include "base/text.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

using enum Property;

namespace {

// A map, or a platform, without the platforms and consoles in it.
RVT_Node& CopyOfItself(const RVT_Node& node) {
    RVT_Node& copy = *RVT_Node::Create(RVT_ELEMENT);
    copy.SetName(node.GetName());
    for (const RVT_Node& attribute : Attributes(node)) {
        SetAttributes(copy, {{attribute.GetName(), attribute.GetValue()}});
    }
    for (const RVT_Node& child : Children(node)) {
        const bool is_platform = child.IsName(tag::Platform) && node.IsName(tag::SystemMap);
        if (!child.IsType(RVT_DELETED) && !is_platform && !child.IsName(tag::Console)) {
            copy.AddChild(child.Copy());
        }
    }
    return copy;
}

// A value as a map would hold it. What would not be kept, a line break or the end of a value that
// is too long, is left as it is: readers judge it. Spreadsheets write switches in capitals.
std::string_view AsHeld(Property property, std::string_view value) {
    if (RowOf(property).kind == ValueKind::kSwitch) {
        for (const std::string_view text : {switch_on, switch_off}) {
            if (EqualsIgnoringCase(value, text)) {
                return text;
            }
        }
    }
    if (property == kName || IsReadAsWritten(value) ||
        value.find_first_of("\r\n") != std::string_view::npos) {
        return value;
    }
    const std::string held = ValueAsRead(value);
    return held.size() < value.size() ? value : arena::Copy(held);
}

// Gives a new element its values: those of its row and, for the rest, the initial ones. A console
// inside a platform has its address.
void SetNewValues(Element& made, const PropertyValues& said) {
    PropertyValues& values = made.values;
    for (const Property property : PropertiesOf(made.owner)) {
        values[property] = said.Has(property)
                               ? AsHeld(property, said[property])
                               : RowOf(property).initial.value_or(std::string_view());
    }
    if (made.parent != nullptr) {
        values[kAddress] = made.Address();
    }
    // An element that is not logged has no events unless they are asked for.
    if (!said.Has(kEvents) && values[kLogging] == switch_off) {
        values[kEvents] = switch_off;
    }
}

// Gives an element that has those of "present" the values that are said. A console that leaves its
// platform takes the address with it, and its identifier follows its port.
void ChangeValues(Element& made, const Element& present, PropertyValues said) {
    if (made.parent != nullptr) {
        said[kAddress] = {};
    } else if (present.parent != nullptr && !said.Has(kAddress)) {
        said[kAddress] = present.Address();
    }
    for (const Property property : PropertiesOf(made.owner)) {
        // Nothing is taken for empty.
        if (said.Has(property) && said[property] != present.values[property]) {
            made.values[property] = AsHeld(property, said[property]);
        }
    }
    if (made.owner == Owner::kConsole && EndsInPort(made.id, present.values[kPort])) {
        const std::string_view number = made.id.substr(0, made.id.find(':'));
        made.id = arena::Copy(ConsoleID(number, made.values[kPort]));
    }
}

class Completion {
  public:
    Completion(InventoryFile& file, const Outline& present)
        : file_(file), present_(present), planned_(present.elements.size()) {
        for (const Element* element : present.elements) {
            if (element->parent == nullptr || element->IsInPlatform()) {
                at_present_.try_emplace({element->owner, element->Name()}, element);
            } else {
                inside_consoles_.try_emplace(element->Name(), element->parent);
            }
        }
    }

    // What shall be there, before any of it has its values.
    Outcome Plan(bool keep) {
        for (Row& row : file_.rows) {
            if (Outcome outcome = PlanRow(row); !outcome.ok()) {
                return outcome;
            }
        }
        for (const Element* element : present_.elements) {
            const bool counts = element->parent == nullptr || element->IsInPlatform();
            if (keep && counts && planned_[element->index] == nullptr) {
                Add({nullptr, element}, element->owner, element->Name());
            }
        }
        // Where the console around one is not to stay, it is one that is yet to be made.
        for (const auto& [row, around] : rows_inside_consoles_) {
            if (planned_[around->index] == nullptr) {
                Add({row, nullptr}, Owner::kConsole, row->values[kName]);
            }
        }
        for (const Item& item : items_) {
            if (Outcome outcome = FindPlatform(item); !outcome.ok()) {
                return outcome;
            }
        }
        return {};
    }

    Outline Make() {
        Outline outline = {file_.map != nullptr ? file_.map : present_.map, {}};
        if (file_.security) {
            outline.map = &CopyOfItself(*outline.map);
            if (RVT_Node* security = FindAttribute(*outline.map, security_tag)) {
                security->SetValue(*file_.security);
            } else {
                SetAttributes(*outline.map, {{security_tag, *file_.security}});
            }
        }
        // A console comes behind its platform.
        std::ranges::stable_sort(items_, {}, [](const Item& item) {
            const Element* parent = item.made->parent;
            return parent == nullptr ? std::pair(item.made->index, false)
                                     : std::pair(parent->index, true);
        });
        for (const auto& [row, present, made] : items_) {
            if (row != nullptr && row->element == nullptr) {
                present == nullptr ? SetNewValues(*made, row->values)
                                   : ChangeValues(*made, *present, row->values);
            }
            outline.elements.push_back(made);
        }
        for (size_t i = 0; i < items_.size(); ++i) {
            items_[i].made->index = i;
        }
        return outline;
    }

  private:
    // An element that is to be made: what is said of it, null for one that is kept; what it is at
    // present, null for a new one.
    struct Item {
        const Row* row;
        const Element* present;
        Element* made = nullptr;
    };
    template <typename Found>
    using ByName = std::map<std::pair<Owner, std::string_view>, Found>;

    template <typename Found>
    static Found Find(const ByName<Found>& table, Owner owner, std::string_view name) {
        const auto found = table.find({owner, name});
        return found == table.end() ? nullptr : found->second;
    }

    [[nodiscard]] Outcome Wrong(const Row& row, const std::string& text) const {
        return WrongAt(PositionOf(file_, row), text);
    }

    // False when there is one of its kind and name already.
    bool Add(Item item, Owner owner, std::string_view name) {
        const Element* said = item.row == nullptr ? nullptr : item.row->element;
        const Element* source = said != nullptr ? said : item.present;
        item.made = &Keep(source != nullptr ? *source : Element{.owner = owner, .id = ""});
        item.made->parent = nullptr;
        item.made->index = items_.size();
        if (item.present != nullptr) {
            planned_[item.present->index] = item.made;
        }
        items_.push_back(item);
        return named_.try_emplace({owner, name}, item.made).second;
    }

    Outcome PlanRow(Row& row) {
        const std::string_view name = row.values[kName];
        if (name.empty()) {
            return Wrong(row, "The name is missing.");
        }
        if (!row.owner) {
            const bool is_platform = Find(at_present_, Owner::kPlatform, name) != nullptr;
            const bool is_console = Find(at_present_, Owner::kConsole, name) != nullptr;
            if (is_platform == is_console) {
                return Wrong(row, "The kind of " + Shortened(name) + " is missing.");
            }
            row.owner = is_platform ? Owner::kPlatform : Owner::kConsole;
        }
        if (Outcome outcome = CheckKeys(row); !outcome.ok()) {
            return outcome;
        }
        const Element* present = Find(at_present_, *row.owner, name);
        const auto inside = inside_consoles_.find(name);
        if (present == nullptr && *row.owner == Owner::kConsole && row.platform.empty() &&
            inside != inside_consoles_.end()) {
            rows_inside_consoles_.emplace_back(&row, inside->second);
            return {};
        }
        return Add({&row, present}, *row.owner, name)
                   ? Outcome()
                   : Wrong(row, Label(*row.owner, name) + " stands there twice.");
    }

    // A row has empty fields where its kind has no such key.
    Outcome CheckKeys(const Row& row) {
        const auto extra = std::ranges::find_if(ListedProperties(), [&row](Property property) {
            return !row.values[property].empty() && !Has(*row.owner, property);
        });
        const bool is_inside = *row.owner == Owner::kPlatform && !row.platform.empty();
        if (extra == ListedProperties().end() && !is_inside) {
            return {};
        }
        const std::string_view key = is_inside ? "platform" : RowOf(*extra).key;
        return Wrong(row,
                     "A " + std::string(KindOf(*row.owner)) + " has no " + std::string(key) + '.');
    }

    // The platform that is named, or that of the element at present.
    Outcome FindPlatform(const Item& item) {
        const Element* parent = item.present == nullptr ? nullptr : item.present->parent;
        std::string_view name;
        if (item.row != nullptr && item.row->platform.data() != nullptr) {
            name = item.row->platform;
            item.made->parent = name.empty() ? nullptr : Find(named_, Owner::kPlatform, name);
        } else if (parent != nullptr) {
            name = parent->Name();
            item.made->parent = planned_[parent->index];
        }
        return item.made->parent != nullptr || name.empty()
                   ? Outcome()
                   : Wrong(*item.row, "Its platform " + Shortened(name) + " is not there.");
    }

    InventoryFile& file_;
    const Outline& present_;
    ByName<const Element*> at_present_;  // of equal names the first
    // The consoles inside standalone ones, with the one around them.
    std::map<std::string_view, const Element*> inside_consoles_;
    std::vector<std::pair<const Row*, const Element*>> rows_inside_consoles_;
    std::vector<Item> items_;
    std::vector<Element*> planned_;  // what is made of the elements at present, by their index
    ByName<Element*> named_;
};

}  // namespace

Result<Outline> Completed(InventoryFile& file, const Outline& present, bool keep) {
    Completion completion(file, present);
    Outcome outcome = completion.Plan(keep);
    return outcome.ok() ? Result(completion.Make()) : outcome;
}

InventoryFile FileOf(const Outline& map, const std::string& name) {
    InventoryFile file = {name, false, {}, std::nullopt, map.map};
    for (const Element* element : map.elements) {
        if (element->parent == nullptr || element->IsInPlatform()) {
            Row& row = file.rows.emplace_back();
            row.number = file.rows.size();
            row.owner = element->owner;
            row.platform = element->parent == nullptr ? "" : element->parent->Name();
            row.values[kName] = element->Name();
            row.element = element;
        }
    }
    return file;
}

// A copy of an element's node, without the consoles in a platform, and with the element's values.
static RVT_Node& CopyWithValues(const Element& element) {
    RVT_Node& copy =
        element.owner == Owner::kPlatform ? CopyOfItself(*element.node) : *element.node->Copy();
    RVT_Node* map = FindPropertyMap(copy);
    for (const Property property : PropertiesOf(element.owner)) {
        RVT_Node* value = FindPropertyValue(copy, property);
        if (value != nullptr) {
            value->SetValue(element.values[property]);
        } else if (map != nullptr && element.values.Has(property)) {
            AddProperty(*map, property, element.values[property]);
        }
    }
    if (RVT_Node* id = FindAttribute(copy, kIDId)) {
        UpdateIDsOfChildren(copy, id->GetValue(), element.id);
        id->SetValue(element.id);
    }
    return copy;
}

Inventory InventoryOf(const Outline& outline) {
    Inventory inventory;
    RVT_Node& map = CopyOfItself(*outline.map);
    inventory.Tree().AddChild(&map);
    RVT_Node* platform = nullptr;
    for (const Element* element : outline.elements) {
        RVT_Node& parent = element->parent != nullptr ? *platform : map;
        RVT_Node* node = nullptr;
        if (element->node == nullptr) {
            node = &AddOwner(parent, element->owner, "", element->values);
        } else {
            node = &CopyWithValues(*element);
            parent.AddChild(node);
        }
        platform = element->parent == nullptr ? node : platform;
    }
    return inventory;
}
