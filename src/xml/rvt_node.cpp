#include "xml/rvt_node.h"

#include <new>
#include <utility>

#include "base/arena.h"

// Any node but an attribute.
struct RVT_Node::Listed : RVT_Node {
    explicit Listed(RVT_NODE_TYPE type) {
        type_ = type;
        is_listed_ = true;
        has_attributes_ = type != RVT_COMMENT;
        if (has_attributes_) {
            attributes_ = nullptr;
        }
    }
    RVT_Node* next = nullptr;
    RVT_Node_List children;
};

void RVT_Node_List::AddNode(RVT_Node* node) {
    node->AsListed()->next = nullptr;
    (tail_ == nullptr ? head_ : tail_->AsListed()->next) = node;
    tail_ = node;
}

RVT_Node* RVT_Node_List::GetFirstNode(RVT_Node_List_Elem*& pos) const {
    pos = head_;
    return head_;
}

RVT_Node* RVT_Node_List::GetNextNode(RVT_Node_List_Elem*& pos) {
    if (pos == nullptr) {
        return nullptr;
    }
    RVT_Node* next = static_cast<RVT_Node*>(pos)->AsListed()->next;
    pos = next;
    return next;
}

RVT_Node* RVT_Node::Create(RVT_NODE_TYPE type) {
    return new (arena::Allocate(sizeof(Listed))) Listed(type);
}

RVT_Node::Listed* RVT_Node::AsListed() {
    return static_cast<Listed*>(this);
}

const RVT_Node::Listed* RVT_Node::AsListed() const {
    return static_cast<const Listed*>(this);
}

void RVT_Node::SetValue(std::string_view value) {
    if (!has_attributes_) {
        value_ = arena::Copy(value);
    }
}

RVT_Node* RVT_Node::AddAttributes(size_t count) {
    if (!has_attributes_ || count == 0) {
        return nullptr;
    }
    size_t had = 0;
    RVT_Node_List_Elem* pos = nullptr;
    for (const RVT_Node* old = GetFirstAttribute(pos); old != nullptr;
         old = GetNextAttribute(pos)) {
        ++had;
    }
    auto* all = static_cast<RVT_Node*>(arena::Allocate((had + count) * sizeof(RVT_Node)));
    for (size_t i = 0; i < had + count; ++i) {
        auto* attribute =
            i < had ? new (all + i) RVT_Node(attributes_[i]) : new (all + i) RVT_Node();
        attribute->is_followed_ = i + 1 < had + count;
    }
    attributes_ = all;
    return all + had;
}

RVT_Node* RVT_Node::GetFirstAttribute(RVT_Node_List_Elem*& pos) const {
    RVT_Node* first = has_attributes_ ? attributes_ : nullptr;
    pos = first;
    return first;
}

RVT_Node* RVT_Node::GetNextAttribute(RVT_Node_List_Elem*& pos) {
    auto* attribute = static_cast<RVT_Node*>(pos);
    RVT_Node* next = attribute != nullptr && attribute->is_followed_ ? attribute + 1 : nullptr;
    pos = next;
    return next;
}

void RVT_Node::AddChild(RVT_Node* child) {
    if (is_listed_) {
        AsListed()->children.AddNode(child);
    }
}

RVT_Node* RVT_Node::GetFirstChild(RVT_Node_List_Elem*& pos) const {
    return is_listed_ ? AsListed()->children.GetFirstNode(pos) : nullptr;
}

bool RVT_Node::HasChildren() const {
    return is_listed_ && !AsListed()->children.IsEmpty();
}

RVT_Node_List RVT_Node::ReleaseChildren() {
    RVT_Node_List released;
    if (is_listed_) {
        std::swap(released, AsListed()->children);
    }
    return released;
}

RVT_Node* RVT_Node::Copy() const {
    RVT_Node* copy = Create(type_);
    copy->name_ = name_;
    RVT_Node_List_Elem* pos = nullptr;
    if (!has_attributes_) {
        copy->value_ = value_;
    } else if (attributes_ != nullptr) {
        size_t count = 1;
        for (const RVT_Node* one = attributes_; one->is_followed_; ++one) {
            ++count;
        }
        copy->attributes_ = static_cast<RVT_Node*>(arena::Allocate(count * sizeof(RVT_Node)));
        for (size_t i = 0; i < count; ++i) {
            new (copy->attributes_ + i) RVT_Node(attributes_[i]);
        }
    }
    for (const RVT_Node* child = GetFirstChild(pos); child != nullptr; child = GetNextChild(pos)) {
        if (!child->IsType(RVT_DELETED)) {
            copy->AddChild(child->Copy());
        }
    }
    return copy;
}

RVT_XML_Tree RVT_XML_Tree::Copy() const {
    RVT_XML_Tree copy;
    RVT_Node_List_Elem* pos = nullptr;
    for (const RVT_Node* node = GetFirstChild(pos); node != nullptr; node = GetNextChild(pos)) {
        if (!node->IsType(RVT_DELETED)) {
            copy.AddChild(node->Copy());
        }
    }
    return copy;
}
