// Walking a node's children: the one place that tests their kind and name.
//
//     for (RVT_Node& console : LiveElements(platform, Console)) { ... }
//
// Walks hold their own position, so they may nest over the same list, and nodes appended during a
// walk are reached.
#pragma once

#include <string_view>

#include "xml/rvt_node.h"

// The children that are called by one of at most two names.
class ElementWalk {
  public:
    enum class Deleted { kSkipped, kIncluded };

    // A walk of the children of "parent", for two names, which may be one.
    ElementWalk(const RVT_Node& parent, Deleted deleted, NameId name, NameId other)
        : deleted_(deleted), name_(name), other_(other) {
        RVT_Node_List_Elem* pos = nullptr;
        first_ = parent.GetFirstChild(pos);
    }

    class Iterator {
      public:
        Iterator(const ElementWalk& walk, RVT_Node_List_Elem* pos) : walk_(walk), pos_(pos) {
            SkipOthers();
        }
        RVT_Node& operator*() const { return *static_cast<RVT_Node*>(pos_); }
        Iterator& operator++() {
            RVT_Node::GetNextChild(pos_);
            SkipOthers();
            return *this;
        }
        bool operator!=(const Iterator& end) const { return pos_ != end.pos_; }

      private:
        void SkipOthers() {
            while (pos_ != nullptr && !walk_.Wants(**this)) {
                RVT_Node::GetNextChild(pos_);
            }
        }
        const ElementWalk& walk_;
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
        return (node.IsName(name_) || node.IsName(other_)) &&
               (deleted_ == Deleted::kIncluded || node.IsType(RVT_ELEMENT));
    }

    RVT_Node* first_ = nullptr;
    Deleted deleted_;
    NameId name_;
    NameId other_;
};

// The elements below "parent" of the given name, or of either name, in document order.
inline ElementWalk LiveElements(const RVT_Node& parent, std::string_view name,
                                std::string_view other) {
    return {parent, ElementWalk::Deleted::kSkipped, InternName(name), InternName(other)};
}
inline ElementWalk LiveElements(const RVT_Node& parent, std::string_view name) {
    const NameId id = InternName(name);
    return {parent, ElementWalk::Deleted::kSkipped, id, id};
}

// The same with those that the run has removed: for the rules that still count them.
inline ElementWalk ElementsEvenDeleted(const RVT_Node& parent, std::string_view name,
                                       std::string_view other) {
    return {parent, ElementWalk::Deleted::kIncluded, InternName(name), InternName(other)};
}
inline ElementWalk ElementsEvenDeleted(const RVT_Node& parent, std::string_view name) {
    const NameId id = InternName(name);
    return {parent, ElementWalk::Deleted::kIncluded, id, id};
}
