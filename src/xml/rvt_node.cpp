#include "xml/rvt_node.h"

#include <new>

#include "base/arena.h"

RVT_XML_Tree rvt_xml_tree;

// What every node but an attribute has behind it.
struct RVT_Node::Lists : RVT_Node {
    explicit Lists(RVT_NODE_TYPE type) : RVT_Node(type, false) {}
    RVT_Node* parent = nullptr;
    RVT_Node_List attributes;
    RVT_Node_List children;
};

void RVT_Node_List::AddNode(RVT_Node* node) {
    node->next = nullptr;
    (tail_ == nullptr ? head_ : tail_->next) = node;
    tail_ = node;
}

RVT_Node* RVT_Node_List::GetFirstNode() {
    return IsEmpty() ? nullptr : GetFirstNode(cursor_);
}

RVT_Node* RVT_Node_List::GetNextNode() {
    return GetNextNode(cursor_);
}

RVT_Node* RVT_Node_List::GetFirstNode(RVT_Node_List_Elem*& pos) const {
    pos = head_;
    return static_cast<RVT_Node*>(pos);
}

RVT_Node* RVT_Node_List::GetNextNode(RVT_Node_List_Elem*& pos) {
    if (pos != nullptr) {
        pos = pos->next;
    }
    return static_cast<RVT_Node*>(pos);
}

RVT_Node* RVT_Node::Create(RVT_NODE_TYPE type) {
    if (type == RVT_ATTRIBUTE) {
        return new (arena::Allocate(sizeof(RVT_Node))) RVT_Node(type, true);
    }
    return new (arena::Allocate(sizeof(Lists))) Lists(type);
}

void RVT_Node::SetValue(std::string_view value) {
    value_ = arena::Copy(value);
}

// An attribute has no lists: it lends out empty ones, which nothing is ever added to.
RVT_Node::Lists* RVT_Node::GetLists() {
    static Lists none(RVT_DELETED);
    return is_attribute_ ? &none : static_cast<Lists*>(this);
}

const RVT_Node::Lists* RVT_Node::GetLists() const {
    return const_cast<RVT_Node*>(this)->GetLists();
}

void RVT_Node::AddAttribute(RVT_Node* attribute) {
    if (!is_attribute_) {
        GetLists()->attributes.AddNode(attribute);
    }
}

RVT_Node* RVT_Node::GetFirstAttribute() {
    return GetLists()->attributes.GetFirstNode();
}

RVT_Node* RVT_Node::GetNextAttribute() {
    return GetLists()->attributes.GetNextNode();
}

RVT_Node* RVT_Node::GetFirstAttribute(RVT_Node_List_Elem*& pos) const {
    return GetLists()->attributes.GetFirstNode(pos);
}

RVT_Node* RVT_Node::GetNextAttribute(RVT_Node_List_Elem*& pos) {
    return RVT_Node_List::GetNextNode(pos);
}

void RVT_Node::AddChild(RVT_Node* child) {
    if (!is_attribute_) {
        child->SetParent(this);
        GetLists()->children.AddNode(child);
    }
}

RVT_Node* RVT_Node::GetFirstChild() {
    return GetLists()->children.GetFirstNode();
}

RVT_Node* RVT_Node::GetNextChild() {
    return GetLists()->children.GetNextNode();
}

RVT_Node* RVT_Node::GetFirstChild(RVT_Node_List_Elem*& pos) const {
    return GetLists()->children.GetFirstNode(pos);
}

RVT_Node* RVT_Node::GetNextChild(RVT_Node_List_Elem*& pos) {
    return RVT_Node_List::GetNextNode(pos);
}

bool RVT_Node::HasChildren() const {
    return !GetLists()->children.IsEmpty();
}

RVT_Node* RVT_Node::ReleaseChildren() {
    RVT_Node* first = GetFirstChild();
    GetLists()->children.Empty();
    return first;
}

RVT_Node* RVT_Node::GetParent() const {
    return GetLists()->parent;
}

void RVT_Node::SetParent(RVT_Node* parent) {
    if (!is_attribute_) {
        GetLists()->parent = parent;
    }
}
