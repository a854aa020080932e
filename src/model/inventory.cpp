#include "model/inventory.h"

#include <set>
#include <span>
#include <string>

#include "base/arena.h"
#include "model/uniqueness.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

RVT_XML_Tree& Inventory::Tree() {
    DropSettled();
    return tree_;
}

void Inventory::BeginCommand() {
    // Values are still as they were given: what a file would make of them belongs here.
    changes_.clear();
    for (; forgotten_ < removed_.size(); ++forgotten_) {
        Forget(removed_[forgotten_]);
    }
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
        return;
    }
    for (; !changes_.empty(); changes_.pop_back()) {
        Store(changes_.back(), changes_.back().old_value);
    }
}

// Takes a removed node from the index, with what was inside it, and its name, so that no walk finds
// it. Its parent keeps it, in the document a trace of it, until DropSettled.
void Inventory::Forget(const Removed& removed) {
    const auto& [parent, node] = removed;
    if (index_ && node->IsName(tag::Platform)) {
        for (RVT_Node& console : LiveElements(*node, tag::Console)) {
            index_->Remove({&console, node});
        }
        index_->Remove({node});
    } else if (index_ && node->IsName(tag::Console)) {
        index_->Remove({node, parent->IsName(tag::Platform) ? parent : nullptr});
    }
    node->SetName("");
}

void Inventory::DropSettled() {
    const auto settled = std::span(removed_).first(settled_);
    std::set<RVT_Node*> parents;
    std::set<const RVT_Node*> gone;
    for (const auto& [parent, node] : settled) {
        parents.insert(parent);
        gone.insert(node);
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
    if (map == nullptr) {
        return Outcome(code, "Cannot find SystemMap element.");
    }
    return map;
}

Result<RVT_Node*> Inventory::FindPlatform(std::string_view name) const {
    const Result<RVT_Node*> map = NeedSystemMap(ExitCode::kLookupFailed);
    if (!map.ok()) {
        return map;
    }
    RVT_Node* platform = index_ ? index_->FindPlatform(name) : ::FindPlatform(**map, name);
    if (platform == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find Platform \"%s\".",
                       std::string(name).c_str());
    }
    return platform;
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
    const Result<RVT_Node*> map = NeedSystemMap(ExitCode::kLookupFailed);
    if (!map.ok()) {
        return map.outcome();
    }
    Result<Place> found = index_ ? index_->FindConsole(name) : WalkToConsole(**map, name);
    if (found.ok() && found->element == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Console \"%s\" not found.",
                       std::string(name).c_str());
    }
    return found;
}

Result<RVT_Node*> Inventory::FindPlatformWithCache(std::string_view name) const {
    const Result<RVT_Node*> map = NeedSystemMap(ExitCode::kLookupFailed);
    if (!map.ok()) {
        return map.outcome();
    }
    // With tables there is no other of that name.
    RVT_Node* platform = index_ ? index_->FindPlatform(name) : nullptr;
    for (RVT_Node& node : LiveElements(**map, tag::Platform)) {
        if (index_ || (platform != nullptr && FindCache(*platform) != nullptr)) {
            break;
        }
        const auto node_name = GetPropertyValue(node, Property::kName);
        if (!node_name) {
            return PropertyMissing(node, Property::kName);
        }
        platform = node_name == name ? &node : platform;
    }
    if (platform == nullptr) {
        return Outcome(ExitCode::kLookupFailed, "");
    }
    if (FindCache(*platform) == nullptr) {
        return Failure(ExitCode::kLookupFailed, "Cannot find Cache for platform \"%s\".",
                       std::string(name).c_str());
    }
    return platform;
}

int Inventory::GetCountOfConsolesWithName(std::string_view name) const {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return Number(ExitCode::kIncompleteMap);
    }
    return index_ ? index_->CountName(name) : ::GetCountOfConsolesWithName(*map, name);
}

bool Inventory::IsDuplicateName(std::string_view name) const {
    return GetCountOfConsolesWithName(name) != 0;
}

bool Inventory::IsDuplicateAddress(const RVT_Node* node, std::string_view address) const {
    if (index_) {
        const bool is_own =
            node != nullptr && GetPropertyValue(*node, Property::kAddress) == address;
        return index_->CountAddress(address) > (is_own ? 1 : 0);
    }
    const RVT_Node* map = FindSystemMap();
    return map != nullptr && ::IsDuplicateAddress(*map, node, address);
}

int Inventory::GetCountOfConsolesWithAddress(std::string_view address,
                                             std::string_view port) const {
    if (index_) {
        return index_->CountPort(address, port);
    }
    const RVT_Node* map = FindSystemMap();
    return map == nullptr ? 0 : ::GetCountOfConsolesWithAddress(*map, address, port);
}

bool Inventory::IsDuplicatePortWithinAddress(std::string_view address,
                                             std::string_view port) const {
    return GetCountOfConsolesWithAddress(address, port) != 0;
}

void Inventory::Add(RVT_Node& parent, Owner owner, std::string_view id,
                    const PropertyValues& values) {
    RVT_Node& element = AddOwner(parent, owner, id, values);
    if (index_) {
        index_->Add({&element, parent.IsName(tag::Platform) ? &parent : nullptr});
    }
}

void Inventory::SetValue(const Place& place, Property property, RVT_Node& attribute,
                         std::string_view value) {
    changes_.push_back({place, property, &attribute, attribute.GetValue()});
    Store(changes_.back(), arena::Copy(value));
}

// Gives the property of "change" a text that is kept for the whole run.
void Inventory::Store(const Change& change, const char* value) {
    const bool is_indexed = index_ && Index::Holds(change.property);
    if (is_indexed) {
        index_->Remove(change.place);
    }
    change.attribute->SetKeptValue(value);
    if (is_indexed) {
        index_->Add(change.place);
    }
}

void Inventory::Remove(RVT_Node& parent, RVT_Node& node) {
    node.Delete();
    removed_.push_back({&parent, &node});
}
