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

// The children of a node that are called by one of at most two names, or all of them.
class ChildWalk {
  public:
    enum class Wanted { kAll, kLive, kEvenDeleted };

    // From the node "first" on, which may be null.
    ChildWalk(RVT_Node* first, Wanted wanted, NameId name, NameId other)
        : first_(first), wanted_(wanted), name_(name), other_(other) {}

    class Iterator {
      public:
        Iterator(const ChildWalk& walk, RVT_Node_List_Elem* pos) : walk_(walk), pos_(pos) {
            SkipOthers();
        }
        RVT_Node& operator*() const { return *static_cast<RVT_Node*>(pos_); }
        Iterator& operator++() {
            RVT_Node::GetNextChild(pos_);
            SkipOthers();
            return *this;
        }
        bool operator==(const Iterator& other) const { return pos_ == other.pos_; }

      private:
        void SkipOthers() {
            while (pos_ != nullptr && !walk_.Wants(**this)) {
                RVT_Node::GetNextChild(pos_);
            }
        }
        const ChildWalk& walk_;
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
    [[nodiscard]] bool Wants(const RVT_Node& node) const {
        if (wanted_ == Wanted::kAll) {
            return true;
        }
        return (node.IsName(name_) || node.IsName(other_)) &&
               (wanted_ == Wanted::kEvenDeleted || node.IsType(RVT_ELEMENT));
    }

    RVT_Node* first_;
    Wanted wanted_;
    NameId name_;
    NameId other_;
};

inline RVT_Node* FirstChild(const RVT_Node& parent) {
    RVT_Node_List_Elem* pos = nullptr;
    return parent.GetFirstChild(pos);
}

// The elements below "parent" of the given name, or of either name, in document order.
inline ChildWalk LiveElements(const RVT_Node& parent, std::string_view name,
                              std::string_view other) {
    return {FirstChild(parent), ChildWalk::Wanted::kLive, InternName(name), InternName(other)};
}
inline ChildWalk LiveElements(const RVT_Node& parent, std::string_view name) {
    const NameId id = InternName(name);
    return {FirstChild(parent), ChildWalk::Wanted::kLive, id, id};
}

// The same with those that the command has removed: for the rules that still count them.
inline ChildWalk ElementsEvenDeleted(const RVT_Node& parent, std::string_view name,
                                     std::string_view other) {
    return {FirstChild(parent), ChildWalk::Wanted::kEvenDeleted, InternName(name),
            InternName(other)};
}
inline ChildWalk ElementsEvenDeleted(const RVT_Node& parent, std::string_view name) {
    const NameId id = InternName(name);
    return {FirstChild(parent), ChildWalk::Wanted::kEvenDeleted, id, id};
}

// All children of a node, and the top-level nodes of a document, whatever they are.
inline ChildWalk Children(const RVT_Node& parent) {
    return {FirstChild(parent), ChildWalk::Wanted::kAll, 0, 0};
}
inline ChildWalk Children(const RVT_XML_Tree& document) {
    RVT_Node_List_Elem* pos = nullptr;
    return {document.GetFirstChild(pos), ChildWalk::Wanted::kAll, 0, 0};
}

// The attributes of a node, in their order.
class Attributes {
  public:
    explicit Attributes(const RVT_Node& node) : node_(node) {}

    class Iterator {
      public:
        explicit Iterator(RVT_Node_List_Elem* pos) : pos_(pos) {}
        RVT_Node& operator*() const { return *static_cast<RVT_Node*>(pos_); }
        Iterator& operator++() {
            RVT_Node::GetNextAttribute(pos_);
            return *this;
        }
        bool operator==(const Iterator& other) const { return pos_ == other.pos_; }

      private:
        RVT_Node_List_Elem* pos_;
    };

    [[nodiscard]] Iterator begin() const {
        RVT_Node_List_Elem* pos = nullptr;
        return Iterator(node_.GetFirstAttribute(pos));
    }
    [[nodiscard]] static Iterator end() { return Iterator(nullptr); }

  private:
    const RVT_Node& node_;
};
