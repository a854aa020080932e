#include "model/inventory.h"

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string>
#include <utility>

#include "base/arena.h"
#include "model/uniqueness.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

RVT_XML_Tree& Inventory::Tree() {
    DropSettled();
    return tree_;
}

void Inventory::BeginCommand() {
    stored_.clear();
    for (; forgotten_ < removed_.size(); ++forgotten_) {
        Forget(removed_[forgotten_]);
    }
    if (is_to_settle_) {
        Settle();
    }
    touched_.clear();
    new_cache_ = nullptr;
    // A single command is served best by walks.
    static constexpr int kFirstIndexed = 2;
    const RVT_Node* map = FindSystemMap();
    if (++commands_ == kFirstIndexed && map != nullptr) {
        index_ = Index::Of(*map);
    }
}

void Inventory::EndCommand(bool accepted) {
    if (accepted) {
        settled_ = forgotten_;
        is_to_settle_ = true;
        accepted_from_ = raws_.size();
        return;
    }
    touched_.clear();
    for (; !stored_.empty(); stored_.pop_back()) {
        Store(stored_.back(), stored_.back().before);
    }
    for (; removed_.size() > forgotten_; removed_.pop_back()) {
        removed_.back().element->RestoreElement();
    }
    if (new_cache_ != nullptr) {
        ShareOutChildren(*new_cache_platform_, [this](const RVT_Node& child) {
            return &child == new_cache_ ? nullptr : new_cache_platform_;
        });
    }
}

void Inventory::MarkKfxConf() {
    marked_from_ = raws_.size();
}

// Exchanges what was given and what is read of it, from the "from"-th on.
void Inventory::Show(size_t from) {
    for (const size_t first : {shown_from_, from}) {
        for (Raw& raw : std::span(raws_).subspan(first)) {
            const char* shown = raw.attribute->GetValue();
            raw.attribute->SetKeptValue(std::exchange(raw.value, shown));
        }
    }
    shown_from_ = from;
}

void Inventory::Touch(RVT_Node& node) {
    if (touched_.empty() || touched_.back() != &node) {
        touched_.push_back(&node);
    }
}

// Of a platform neither what is inside it nor its cache.
void Inventory::SettleBelow(RVT_Node& node, bool is_platform) {
    for (RVT_Node& attribute : Attributes(node)) {
        if (!IsReadAsWritten(attribute.GetValue())) {
            raws_.push_back({&attribute, attribute.GetValue()});
            attribute.SetValue(ValueAsRead(attribute.GetValue()));
        }
    }
    for (RVT_Node& child : Children(node)) {
        if (!is_platform || (!child.IsName(tag::Console) && !child.IsName(tag::Cache))) {
            SettleBelow(child, false);
        }
    }
}

// Whether what the tables know of the touched elements is what is read.
bool Inventory::IsIndexSafe() const {
    return is_settled_ && std::ranges::all_of(touched_, [](const RVT_Node* node) {
               return std::ranges::all_of(
                   std::array{Property::kName, Property::kAddress, Property::kPort},
                   [node](Property property) {
                       return IsReadAsWritten(PropertyOrEmpty(*node, property));
                   });
           });
}

// Makes of values what writing and reading them would; once of all that were in the file.
void Inventory::Settle() {
    is_to_settle_ = false;
    RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return;
    }
    const bool is_index_safe = IsIndexSafe();
    if (!is_settled_) {
        SettleBelow(*map, false);
    } else {
        for (RVT_Node* node : touched_) {
            SettleBelow(*node, node->IsName(tag::Platform));
        }
    }
    is_settled_ = true;
    shown_from_ = raws_.size();
    if (index_ && !is_index_safe) {
        index_ = Index::Of(*map);
    }
}

// Takes a removed node from the index, with what was inside it, and its name, so that no walk finds
// it. Its parent keeps it, in the document a trace of it, until DropSettled.
void Inventory::Forget(const Place& removed) {
    if (index_ && removed.element->IsName(tag::Platform)) {
        for (RVT_Node& console : LiveElements(*removed.element, tag::Console)) {
            index_->Remove({&console, removed.element});
        }
    }
    if (index_ && !removed.element->IsName(tag::Cache)) {
        index_->Remove(removed);
    }
    removed.element->SetName("");
}

void Inventory::DropSettled() {
    std::set<RVT_Node*> parents;
    std::set<const RVT_Node*> gone;
    for (const auto& [element, platform] : std::span(removed_).first(settled_)) {
        parents.insert(platform != nullptr ? platform : FindSystemMap());
        gone.insert(element);
    }
    for (RVT_Node* parent : parents) {
        ShareOutChildren(*parent, [&gone, parent](const RVT_Node& child) {
            return gone.contains(&child) ? nullptr : parent;
        });
    }
    removed_.erase(removed_.begin(), removed_.begin() + static_cast<ptrdiff_t>(settled_));
    forgotten_ -= settled_;
    settled_ = 0;
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
    RVT_Node* platform = index_ ? index_->FindPlatform(name) : ::FindPlatform(Map(), name);
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
    Result<Place> found = index_ ? index_->FindConsole(name) : WalkToConsole(Map(), name);
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
        index_ ? index_->FindPlatform(name) : WalkToPlatformWithCache(Map(), name);
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
    return index_ ? index_->CountName(name) : ::GetCountOfConsolesWithName(Map(), name);
}

bool Inventory::IsDuplicateName(std::string_view name) const {
    return GetCountOfConsolesWithName(name) != 0;
}

bool Inventory::IsDuplicateAddress(const RVT_Node* node, std::string_view address) const {
    if (!index_) {
        return ::IsDuplicateAddress(Map(), node, address);
    }
    const bool is_own = node != nullptr && GetPropertyValue(*node, Property::kAddress) == address;
    return index_->CountAddress(address) > (is_own ? 1 : 0);
}

int Inventory::GetCountOfConsolesWithAddress(std::string_view address,
                                             std::string_view port) const {
    return index_ ? index_->CountPort(address, port)
                  : ::GetCountOfConsolesWithAddress(Map(), address, port);
}

bool Inventory::IsDuplicatePortWithinAddress(std::string_view address,
                                             std::string_view port) const {
    return GetCountOfConsolesWithAddress(address, port) != 0;
}

void Inventory::Add(RVT_Node* platform, Owner owner, std::string_view id,
                    const PropertyValues& values) {
    RVT_Node& parent = platform != nullptr ? *platform : *FindSystemMap();
    RVT_Node& element = AddOwner(parent, owner, id, values);
    Touch(element);
    if (index_) {
        index_->Add({&element, platform});
    }
}

void Inventory::AddCache(RVT_Node& platform, RVT_Node& cache) {
    platform.AddChild(&cache);
    Touch(cache);
    new_cache_ = &cache;
    new_cache_platform_ = &platform;
}

void Inventory::SetValue(const Place& place, Property property, RVT_Node& attribute,
                         std::string_view value) {
    stored_.push_back({place, property, &attribute, attribute.GetValue()});
    Store(stored_.back(), arena::Copy(value));
    Touch(*place.element);
}

// "value" is kept for the whole run.
void Inventory::Store(const StoredValue& stored, const char* value) {
    const bool is_indexed = index_ && Index::Holds(stored.property);
    if (is_indexed) {
        index_->Remove(stored.place);
    }
    stored.attribute->SetKeptValue(value);
    if (is_indexed) {
        index_->Add(stored.place);
    }
}

void Inventory::Remove(RVT_Node& node, RVT_Node* platform) {
    node.Delete();
    removed_.push_back({&node, platform});
}
