// Walking a node's children and attributes: the one place that tests kind and name.
//
//     for (RVT_Node& console : LiveElements(platform, tag::Console)) { ... }
//     for (RVT_Node& attribute : Attributes(platform)) { ... }
//
// Walks hold their own position, so they may nest over the same list, and nodes appended behind the
// position of a walk are reached.
#pragma once

#include <string_view>

#include "xml/rvt_node.h"

class NodeWalk {
  public:
    // Attributes, all children, or those that are called by one of at most two names.
    enum class Over { kAttributes, kChildren, kLive, kEvenDeleted };

    // From the node "first" on, which may be null.
    NodeWalk(RVT_Node* first, Over over, NameId name = 0, NameId other = 0)
        : first_(first), over_(over), name_(name), other_(other) {}

    class Iterator {
      public:
        Iterator(const NodeWalk& walk, RVT_Node_List_Elem* pos) : walk_(walk), pos_(pos) {
            SkipOthers();
        }
        RVT_Node& operator*() const { return *static_cast<RVT_Node*>(pos_); }
        RVT_Node* operator->() const { return &**this; }
        Iterator& operator++() {
            walk_.Step(pos_);
            SkipOthers();
            return *this;
        }
        bool operator==(const Iterator& other) const { return pos_ == other.pos_; }

      private:
        void SkipOthers() {
            while (pos_ != nullptr && !walk_.Wants(**this)) {
                walk_.Step(pos_);
            }
        }
        const NodeWalk& walk_;
        RVT_Node_List_Elem* pos_;
    };

    [[nodiscard]] Iterator begin() const { return {*this, first_}; }
    [[nodiscard]] Iterator end() const { return {*this, nullptr}; }
    // The first of them, or null.
    [[nodiscard]] RVT_Node* First() const {
        const Iterator first = begin();
        return first != end() ? &*first : nullptr;
    }

  private:
    void Step(RVT_Node_List_Elem*& pos) const {
        over_ == Over::kAttributes ? RVT_Node::GetNextAttribute(pos) : RVT_Node::GetNextChild(pos);
    }
    [[nodiscard]] bool Wants(const RVT_Node& node) const {
        return over_ <= Over::kChildren ||
               ((node.IsName(name_) || node.IsName(other_)) &&
                (over_ == Over::kEvenDeleted || node.IsType(RVT_ELEMENT)));
    }

    RVT_Node* first_;
    Over over_;
    NameId name_;
    NameId other_;
};

// The attributes of a node, in their order.
inline NodeWalk Attributes(const RVT_Node& node) {
    RVT_Node_List_Elem* pos = nullptr;
    return {node.GetFirstAttribute(pos), NodeWalk::Over::kAttributes};
}

// All children of a node or document, whatever they are.
inline NodeWalk Children(const RVT_Node& parent) {
    RVT_Node_List_Elem* pos = nullptr;
    return {parent.GetFirstChild(pos), NodeWalk::Over::kChildren};
}
inline NodeWalk Children(const RVT_XML_Tree& document) {
    RVT_Node_List_Elem* pos = nullptr;
    return {document.GetFirstChild(pos), NodeWalk::Over::kChildren};
}

// The elements below "parent" called "name" or, where it is given, "other", in document order.
inline NodeWalk LiveElements(const RVT_Node& parent, std::string_view name,
                             std::string_view other = {}) {
    RVT_Node_List_Elem* pos = nullptr;
    const NameId id = InternName(name);
    return {parent.GetFirstChild(pos), NodeWalk::Over::kLive, id,
            other.empty() ? id : InternName(other)};
}

// The same with those that the command has removed: for the rules that still count them.
inline NodeWalk ElementsEvenDeleted(const RVT_Node& parent, std::string_view name,
                                    std::string_view other = {}) {
    RVT_Node_List_Elem* pos = nullptr;
    const NameId id = InternName(name);
    return {parent.GetFirstChild(pos), NodeWalk::Over::kEvenDeleted, id,
            other.empty() ? id : InternName(other)};
}
