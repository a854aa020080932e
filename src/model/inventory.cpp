#include "model/inventory.h"

#include <algorithm>
#include <array>
#include <bit>
#include <set>
#include <span>
#include <string>
#include <utility>

#include "base/arena.h"
#include "model/uniqueness.h"
#include "model/vocabulary.h"
#include "xml/parsed_text.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

RVT_XML_Tree& Inventory::Tree() {
    DropTraces();
    return tree_;
}

void Inventory::BeginCommand() {
    stored_.clear();
    changed_ = nullptr;
    if (traces_ >= next_drop_) {
        DropTraces();
    }
    removed_before_ = removed_.size();
    // A single command is served best by walks.
    static constexpr int kFirstIndexed = 2;
    const RVT_Node* map = FindSystemMap();
    ++commands_;
    // A map that is irregular may be mended by and by.
    if (index_ == nullptr && map != nullptr && commands_ >= kFirstIndexed &&
        std::has_single_bit(static_cast<unsigned>(commands_))) {
        index_ = Index::Of(*map);
    }
}

void Inventory::EndCommand(bool accepted) {
    if (accepted) {
        traces_ = removed_before_;
        return;
    }
    for (; !stored_.empty(); stored_.pop_back()) {
        Store(stored_.back(), stored_.back().before);
    }
}

// Makes of the values of a node, and of all below it, what is read.
static void MakeAsRead(const RVT_Node& node) {
    for (RVT_Node& attribute : Attributes(node)) {
        if (!IsReadAsWritten(attribute.GetValue())) {
            attribute.SetValue(ValueAsRead(attribute.GetValue()));
        }
    }
    for (const RVT_Node& child : Children(node)) {
        MakeAsRead(child);
    }
}

// Whether what tables know of an element is what is read of it.
static bool HasKeysAsRead(const RVT_Node& element) {
    return std::ranges::all_of(
        std::array{Property::kName, Property::kAddress, Property::kPort},
        [&element](Property key) { return IsReadAsWritten(PropertyOrEmpty(element, key)); });
}

void Inventory::Settle() {
    const RVT_Node* map = FindSystemMap();
    const bool is_whole = !std::exchange(is_settled_, true) && !AreParsedValuesAsWritten();
    const bool keeps_index =
        index_ == nullptr || (!is_whole && (changed_ == nullptr || HasKeysAsRead(*changed_)));
    if (is_whole) {
        MakeAsRead(*map);
    } else if (changed_ != nullptr) {
        // The command gave a platform's consoles and cache nothing.
        MakeAsRead(changed_->IsName(tag::Platform) ? *FindPropertyMap(*changed_) : *changed_);
    }
    if (!keeps_index) {
        index_ = Index::Of(*map);
    }
}

void Inventory::DropTraces() {
    std::set<RVT_Node*> parents;
    for (const auto& [element, platform] : std::span(removed_).first(traces_)) {
        parents.insert(platform != nullptr ? platform : FindSystemMap());
    }
    const RVT_Node* last = removed_.size() > traces_ ? removed_.back().element : nullptr;
    size_t walked = 0;
    for (RVT_Node* parent : parents) {
        ShareOutChildren(*parent, [last, &walked, parent](const RVT_Node& child) {
            ++walked;
            return child.IsType(RVT_DELETED) && &child != last ? nullptr : parent;
        });
    }
    next_drop_ = std::max<size_t>(walked / 4, 16);
    removed_.erase(removed_.begin(), removed_.begin() + static_cast<ptrdiff_t>(traces_));
    traces_ = 0;
}

RVT_Node* Inventory::FindSystemMap() const {
    return ::FindSystemMap(tree_);
}

Result<RVT_Node*> Inventory::NeedSystemMap(ExitCode code) const {
    RVT_Node* map = FindSystemMap();
    return map != nullptr ? Result(map) : Outcome(code, "Cannot find SystemMap element.");
}

// The root, or an element without children in its place.
const RVT_Node& Inventory::Map() const {
    static const RVT_Node* const kNoMap = RVT_Node::Create(RVT_ELEMENT);
    const RVT_Node* map = FindSystemMap();
    return map != nullptr ? *map : *kNoMap;
}

// The failure of a lookup with "message", unless it is the root that is missing.
Outcome Inventory::NotFound(Outcome failure) const {
    const Result<RVT_Node*> map = NeedSystemMap(failure.code());
    return map.ok() ? failure : map.outcome();
}

Result<RVT_Node*> Inventory::FindPlatform(std::string_view name) const {
    RVT_Node* platform =
        index_ != nullptr ? index_->FindPlatform(name) : ::FindPlatform(Map(), name);
    return platform != nullptr
               ? Result(platform)
               : NotFound(Failure(ExitCode::kLookupFailed, "Cannot find Platform \"%s\".",
                                  std::string(name).c_str()));
}

// The walk that FindConsole is without tables; a place without an element for none.
static Result<Place> WalkToConsole(const RVT_Node& map, std::string_view name) {
    for (RVT_Node& node : LiveElements(map, tag::Platform, tag::Console)) {
        if (node.IsName(tag::Platform)) {
            if (RVT_Node* console = FindConsole(node, name); console != nullptr) {
                return Place{console, &node};
            }
            continue;
        }
        const auto console_name = GetPropertyValue(node, Property::kName);
        if (!console_name) {
            return PropertyMissing(node, Property::kName);
        }
        if (console_name == name) {
            return Place{&node};
        }
    }
    return Place();
}

Result<Place> Inventory::FindConsole(std::string_view name) const {
    Result<Place> found =
        index_ != nullptr ? index_->FindConsole(name) : WalkToConsole(Map(), name);
    if (found.ok() && found->element == nullptr) {
        return NotFound(Failure(ExitCode::kLookupFailed, "Console \"%s\" not found.",
                                std::string(name).c_str()));
    }
    return found;
}

// The same for FindPlatformWithCache: the first that has one, or the last that has none.
static Result<RVT_Node*> WalkToPlatformWithCache(const RVT_Node& map, std::string_view name) {
    RVT_Node* platform = nullptr;
    for (RVT_Node& node : LiveElements(map, tag::Platform)) {
        const auto node_name = GetPropertyValue(node, Property::kName);
        if (!node_name) {
            return PropertyMissing(node, Property::kName);
        }
        platform = node_name == name ? &node : platform;
        if (platform == &node && FindCache(node) != nullptr) {
            break;
        }
    }
    return platform;
}

Result<RVT_Node*> Inventory::FindPlatformWithCache(std::string_view name) const {
    Result<RVT_Node*> platform =
        index_ != nullptr ? index_->FindPlatform(name) : WalkToPlatformWithCache(Map(), name);
    if (!platform.ok() || (*platform != nullptr && FindCache(**platform) != nullptr)) {
        return platform;
    }
    return NotFound(*platform == nullptr
                        ? Outcome(ExitCode::kLookupFailed, "")
                        : Failure(ExitCode::kLookupFailed, "Cannot find Cache for platform \"%s\".",
                                  std::string(name).c_str()));
}

int Inventory::GetCountOfConsolesWithName(std::string_view name) const {
    if (FindSystemMap() == nullptr) {
        return Number(ExitCode::kIncompleteMap);
    }
    return index_ != nullptr ? index_->CountName(name) : ::GetCountOfConsolesWithName(Map(), name);
}

bool Inventory::IsDuplicateName(std::string_view name) const {
    return GetCountOfConsolesWithName(name) != 0;
}

bool Inventory::IsDuplicateAddress(const RVT_Node* node, std::string_view address) const {
    if (index_ == nullptr) {
        return ::IsDuplicateAddress(Map(), node, address);
    }
    const bool is_own = node != nullptr && GetPropertyValue(*node, Property::kAddress) == address;
    return index_->CountAddress(address) > (is_own ? 1 : 0);
}

int Inventory::GetCountOfConsolesWithAddress(std::string_view address,
                                             std::string_view port) const {
    return index_ != nullptr ? index_->CountPort(address, port)
                             : ::GetCountOfConsolesWithAddress(Map(), address, port);
}

bool Inventory::IsDuplicatePortWithinAddress(std::string_view address,
                                             std::string_view port) const {
    return GetCountOfConsolesWithAddress(address, port) != 0;
}

void Inventory::Add(RVT_Node* platform, Owner owner, std::string_view id,
                    const PropertyValues& values) {
    RVT_Node& parent = platform != nullptr ? *platform : *FindSystemMap();
    changed_ = &AddOwner(parent, owner, id, values);
    if (index_ != nullptr) {
        index_->Add({changed_, platform});
    }
}

void Inventory::AddCache(RVT_Node& platform, RVT_Node& cache) {
    platform.AddChild(&cache);
    changed_ = &cache;
}

void Inventory::SetValue(const Place& place, Property property, RVT_Node& attribute,
                         std::string_view value) {
    stored_.push_back({place, property, &attribute, attribute.GetValue()});
    Store(stored_.back(), arena::Copy(value));
    changed_ = place.element;
}

// "value" is kept for the whole run.
void Inventory::Store(const StoredValue& stored, const char* value) {
    const bool is_indexed = index_ != nullptr && Index::Holds(stored.property);
    if (is_indexed) {
        index_->Remove(stored.place);
    }
    stored.attribute->SetKeptValue(value);
    if (is_indexed) {
        index_->Add(stored.place);
    }
}

// The node loses its name, so that no walk finds it, and its place in the tables, with what is
// inside it. Its parent keeps it until DropTraces.
void Inventory::Remove(RVT_Node& node, RVT_Node* platform) {
    if (index_ != nullptr && node.IsName(tag::Platform)) {
        for (RVT_Node& console : LiveElements(node, tag::Console)) {
            index_->Remove({&console, &node});
        }
    }
    if (index_ != nullptr && !node.IsName(tag::Cache)) {
        index_->Remove({&node, platform});
    }
    node.Delete();
    node.SetName("");
    removed_.push_back({&node, platform});
}

Inventory NewInventory() {
    RVT_Node* map = RVT_Node::Create(RVT_ELEMENT);
    map->SetName(tag::SystemMap);
    SetAttributes(
        *map, {{serial_tag, "1"}, {security_tag, switch_off}, {version_tag, systemmap_version}});
    Inventory inventory;
    inventory.Tree().AddChild(map);
    return inventory;
}
