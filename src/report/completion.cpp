#include "report/completion.h"

#include <algorithm>
#include <map>
#include <new>
#include <numeric>
#include <utility>

#include "base/arena.h"
#include "base/text.h"
#include "commands/console.h"
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
// is too long, is left for the judgement of who reads it. Spreadsheets write switches in capitals.
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

class Completion {
  public:
    Completion(InventoryFile& file, const Inventory& present)
        : file_(file),
          map_(file.map != nullptr ? *file.map : *present.FindSystemMap()),
          elements_(OutlineOf(present).elements),
          planned_(elements_.size(), kNone) {
        for (size_t i = 0; i < elements_.size(); ++i) {
            present_.try_emplace({elements_[i].owner, elements_[i].name}, i);
            if (elements_[i].owner == Owner::kConsole && elements_[i].platform == kNone) {
                for (const RVT_Node& inside : LiveElements(*elements_[i].element, tag::Console)) {
                    inside_consoles_.try_emplace(PropertyOrEmpty(inside, kName), i);
                }
            }
        }
    }

    // What shall be there, before any of it is made.
    Outcome Plan(bool keep) {
        for (Row& row : file_.rows) {
            if (Outcome outcome = PlanRow(row); !outcome.ok()) {
                return outcome;
            }
        }
        for (size_t i = 0; keep && i < elements_.size(); ++i) {
            if (planned_[i] == kNone) {
                Add({nullptr, elements_[i].owner, elements_[i].name, i});
            }
        }
        // Where the console around one is not to stay, it is one that is yet to be made.
        for (const auto& [row, around] : rows_inside_consoles_) {
            if (planned_[around] == kNone) {
                Add({row, Owner::kConsole, row->values[kName], kNone});
            }
        }
        for (Item& item : items_) {
            if (Outcome outcome = FindPlatform(item); !outcome.ok()) {
                return outcome;
            }
        }
        return {};
    }

    Outline Make() {
        Outline outline = {&CopyOfItself(map_), {}};
        if (RVT_Node* security = FindAttribute(*outline.map, security_tag); !file_.security) {
        } else if (security != nullptr) {
            security->SetValue(*file_.security);
        } else {
            SetAttributes(*outline.map, {{security_tag, *file_.security}});
        }
        outline.elements.reserve(items_.size());
        size_t platform = kNone;
        for (const size_t i : InOrderOfMap()) {
            const bool is_inside = items_[i].platform != kNone;
            platform = is_inside ? platform : outline.elements.size();
            outline.elements.push_back(MakeItem(items_[i], is_inside ? platform : kNone, outline));
        }
        return outline;
    }

  private:
    // A platform or console of the inventory to be made.
    struct Item {
        const Row* row;  // null for one that is kept
        Owner owner;
        std::string_view name;
        size_t present;           // the index of what it is at present, or kNone
        size_t platform = kNone;  // the index of the item that it is inside of
    };
    using ByName = std::map<std::pair<Owner, std::string_view>, size_t>;

    static size_t Find(const ByName& table, Owner owner, std::string_view name) {
        const auto found = table.find({owner, name});
        return found == table.end() ? kNone : found->second;
    }

    [[nodiscard]] Outcome Wrong(const Row& row, const std::string& text) const {
        return WrongAt(PlaceOf(file_, row), text);
    }

    // False when there is one of its kind and name already.
    bool Add(const Item& item) {
        if (item.present != kNone) {
            planned_[item.present] = items_.size();
        }
        items_.push_back(item);
        return named_.try_emplace({item.owner, item.name}, items_.size() - 1).second;
    }

    Outcome PlanRow(Row& row) {
        const std::string_view name = row.values[kName];
        if (name.empty()) {
            return Wrong(row, "The name is missing.");
        }
        if (!row.owner) {
            const bool is_platform = Find(present_, Owner::kPlatform, name) != kNone;
            const bool is_console = Find(present_, Owner::kConsole, name) != kNone;
            if (is_platform == is_console) {
                return Wrong(row, "The kind of " + Shortened(name) + " is missing.");
            }
            row.owner = is_platform ? Owner::kPlatform : Owner::kConsole;
        }
        if (Outcome outcome = CheckKeys(row); !outcome.ok()) {
            return outcome;
        }
        const size_t present = Find(present_, *row.owner, name);
        const auto inside = inside_consoles_.find(name);
        if (present == kNone && *row.owner == Owner::kConsole && row.platform.empty() &&
            inside != inside_consoles_.end()) {
            rows_inside_consoles_.emplace_back(&row, inside->second);
            return {};
        }
        return Add({&row, *row.owner, name, present})
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
    Outcome FindPlatform(Item& item) {
        const size_t at_present = item.present == kNone ? kNone : elements_[item.present].platform;
        std::string_view name;
        if (item.row != nullptr && item.row->platform.data() != nullptr) {
            name = item.row->platform;
            item.platform = name.empty() ? kNone : Find(named_, Owner::kPlatform, name);
        } else if (at_present != kNone) {
            name = elements_[at_present].name;
            item.platform = planned_[at_present];
        }
        return item.platform != kNone || name.empty()
                   ? Outcome()
                   : Wrong(*item.row, "Its platform " + Shortened(name) + " is not there.");
    }

    // The indexes of the items, those of consoles behind that of their platform.
    [[nodiscard]] std::vector<size_t> InOrderOfMap() const {
        std::vector<size_t> order(items_.size());
        std::iota(order.begin(), order.end(), 0);
        std::ranges::stable_sort(order, {}, [this](size_t i) {
            const size_t platform = items_[i].platform;
            return platform == kNone ? std::pair(i, false) : std::pair(platform, true);
        });
        return order;
    }

    // "platform" is the index in "outline" of that which it is inside of.
    [[nodiscard]] Element MakeItem(const Item& item, size_t platform,
                                   const Outline& outline) const {
        const RVT_Node* said = item.row == nullptr ? nullptr : item.row->element;
        if (said == nullptr && item.present == kNone) {
            const std::string_view address = platform == kNone
                                                 ? std::string_view()
                                                 : ValueOf(outline.elements[platform], kAddress);
            return {.owner = item.owner,
                    .values = NewValues(item, address),
                    .platform = platform,
                    .name = item.name,
                    .id = {}};
        }
        const RVT_Node& element = said != nullptr ? *said : *elements_[item.present].element;
        RVT_Node& made = item.owner == Owner::kPlatform ? CopyOfItself(element) : *element.Copy();
        if (item.row != nullptr && said == nullptr) {
            ChangeValues(item, elements_[item.present], made);
        }
        return ElementOf(made, platform);
    }

    // A console inside a platform has its address when it is made.
    [[nodiscard]] static const PropertyValues* NewValues(const Item& item,
                                                         std::string_view platform_address) {
        PropertyValues values;
        for (const Property property : PropertiesOf(item.owner)) {
            values[property] = item.row->values.Has(property)
                                   ? AsHeld(property, item.row->values[property])
                                   : RowOf(property).initial.value_or(std::string_view());
        }
        if (item.platform != kNone) {
            values[kAddress] = platform_address;
        }
        // An element that is not logged has no events unless they are asked for.
        if (!item.row->values.Has(kEvents) && values[kLogging] == switch_off) {
            values[kEvents] = switch_off;
        }
        return new (arena::Allocate(sizeof values)) PropertyValues(values);
    }

    void ChangeValues(const Item& item, const Element& present, const RVT_Node& made) const {
        const PropertyValues held = GetPropertyValues(*present.element, item.owner);
        PropertyValues said = item.row->values;
        if (item.platform != kNone) {
            said[kAddress] = {};
        } else if (present.platform != kNone && !said.Has(kAddress)) {
            said[kAddress] = PropertyOrEmpty(*elements_[present.platform].element, kAddress);
        }
        for (const Property property : PropertiesOf(item.owner)) {
            // Nothing is taken for empty.
            if (said.Has(property) && said[property] != held[property]) {
                Change(made, property, AsHeld(property, said[property]));
            }
        }
        if (item.owner == Owner::kConsole && said.Has(kPort) && said[kPort] != held[kPort]) {
            // One whose identifier cannot follow its port keeps it.
            static_cast<void>(HandleConsolePortChange(made, std::string(held[kPort]), said[kPort]));
        }
    }

    static void Change(const RVT_Node& element, Property property, std::string_view value) {
        RVT_Node* map = FindPropertyMap(element);
        RVT_Node* attribute = FindPropertyValue(element, property);
        if (attribute != nullptr) {
            attribute->SetValue(value);
        } else if (map != nullptr) {
            AddProperty(*map, property, value);
        }
    }

    InventoryFile& file_;
    const RVT_Node& map_;
    const Elements elements_;
    ByName present_;  // of equal names the first
    // The consoles inside standalone ones, with the index of the one around them.
    std::map<std::string_view, size_t> inside_consoles_;
    std::vector<std::pair<const Row*, size_t>> rows_inside_consoles_;
    std::vector<Item> items_;
    std::vector<size_t> planned_;  // the items of "elements_"
    ByName named_;                 // items
};

}  // namespace

Result<Outline> CompletedOutline(InventoryFile& file, const Inventory& present, bool keep) {
    Completion completion(file, present);
    Outcome outcome = completion.Plan(keep);
    return outcome.ok() ? Result(completion.Make()) : outcome;
}

Result<Inventory> Completed(InventoryFile& file, const Inventory& present, bool keep) {
    const Result<Outline> outline = CompletedOutline(file, present, keep);
    if (!outline.ok()) {
        return outline.outcome();
    }
    Inventory inventory;
    inventory.Tree().AddChild(outline->map);
    RVT_Node* platform = nullptr;
    for (const Element& item : outline->elements) {
        RVT_Node& parent = item.platform != kNone ? *platform : *outline->map;
        RVT_Node* node = item.element;
        if (node == nullptr) {
            node = &AddOwner(parent, item.owner, "", *item.values);
        } else {
            parent.AddChild(node);
        }
        platform = item.platform == kNone ? node : platform;
    }
    return inventory;
}

InventoryFile FileOf(const Inventory& map, const std::string& name) {
    InventoryFile file = {name, false, {}, std::nullopt, map.FindSystemMap()};
    const Elements elements = OutlineOf(map).elements;
    for (const Element& element : elements) {
        Row& row = file.rows.emplace_back();
        row.number = file.rows.size();
        row.owner = element.owner;
        row.platform = element.platform == kNone ? "" : elements[element.platform].name;
        row.values[kName] = element.name;
        row.element = element.element;
    }
    return file;
}

namespace {

class Places {
  public:
    explicit Places(const InventoryFile& file) : file_(file), rows_(RowsBySubject(file)) {}

    // Adds those of the start tags in "nodes", which stand in an element at "around".
    void Add(const NodeWalk& nodes, const std::string& around) {
        for (const RVT_Node& node : nodes) {
            if (node.IsType(RVT_ELEMENT)) {
                const std::string place = Of(node, around);
                places.push_back(place);
                Add(Children(node), place);
            }
        }
    }

    std::vector<std::string> places;

  private:
    [[nodiscard]] std::string Of(const RVT_Node& node, const std::string& around) const {
        const Owner owner = node.IsName(tag::Platform) ? Owner::kPlatform : Owner::kConsole;
        const auto found = node.IsName(tag::Platform) || node.IsName(tag::Console)
                               ? rows_.find(Label(owner, PropertyOrEmpty(node, kName)))
                               : rows_.end();
        return found == rows_.end() ? around : PlaceIn(file_, *found->second);
    }

    const InventoryFile& file_;
    const std::unordered_map<std::string, const Row*> rows_;
};

}  // namespace

std::vector<std::string> PlacesOfStartTags(const InventoryFile& file, const Inventory& completed) {
    Places all(file);
    all.Add(Children(completed.Tree()), file.is_csv ? "1" : "security");
    return std::move(all.places);
}
