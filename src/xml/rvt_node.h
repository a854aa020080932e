// The document tree: what the reader builds, the commands change and the writer prints.
//
// Nodes are untyped; a kind tells elements, attributes, comments and the XML declaration apart.
// Removing something marks its node RVT_DELETED: it keeps its place, its attributes and its
// children, walks still return it, and the writer leaves it out. Nodes live until the process ends.
//
// How nodes lie in memory is known here alone. The link to the next node is part of a node, so a
// node stands in one list at a time, and an attribute is a node without lists and parent (24 bytes
// where an element has 80; a map has four attributes to an element).
#pragma once

#include <cstdint>
#include <string_view>

#include "xml/names.h"

enum RVT_NODE_TYPE : uint8_t {
    RVT_ELEMENT = 1,
    RVT_ATTRIBUTE = 2,
    RVT_COMMENT = 4,
    RVT_XML_DECL = 5,
    RVT_DELETED = 6,
};

class RVT_Node;

// A place in a list: the link that every node carries.
struct RVT_Node_List_Elem {
    RVT_Node_List_Elem* next = nullptr;
};

// Nodes in the order in which they were added. The list does not own them.
class RVT_Node_List {
  public:
    // Appends a node, which must not stand in another list. A walk that is under way reaches it.
    void AddNode(RVT_Node* node);

    // Walks with the list's own cursor; null when there is no (further) node. At most one such
    // walk of a list may be open at a time.
    RVT_Node* GetFirstNode();
    RVT_Node* GetNextNode();

    // The same walk with a cursor held by the caller.
    RVT_Node* GetFirstNode(RVT_Node_List_Elem*& pos) const;
    static RVT_Node* GetNextNode(RVT_Node_List_Elem*& pos);

    [[nodiscard]] bool IsEmpty() const { return head_ == nullptr; }
    // Forgets the nodes, which stay as they are.
    void Empty() { head_ = tail_ = cursor_ = nullptr; }

  private:
    RVT_Node_List_Elem* head_ = nullptr;
    RVT_Node_List_Elem* tail_ = nullptr;
    RVT_Node_List_Elem* cursor_ = nullptr;
};

class RVT_Node : public RVT_Node_List_Elem {
  public:
    // A new node with empty name and value, in memory of its own for the rest of the run. Throws
    // std::bad_alloc when there is none.
    static RVT_Node* Create(RVT_NODE_TYPE type);

    RVT_Node(const RVT_Node&) = delete;
    RVT_Node& operator=(const RVT_Node&) = delete;

    // Both copy the text; a value ends at its first zero byte, which no XML text holds.
    void SetName(std::string_view name) { name_ = InternName(name); }
    void SetValue(std::string_view value);

    [[nodiscard]] std::string_view GetName() const { return NameText(name_); }
    // The text stays valid for the whole run, also when the node gets another value.
    [[nodiscard]] const char* GetValue() const { return value_; }

    // Exact comparisons.
    [[nodiscard]] bool IsName(std::string_view name) const { return GetName() == name; }
    [[nodiscard]] bool IsName(NameId name) const { return name_ == name; }
    [[nodiscard]] bool IsValue(std::string_view value) const { return value == value_; }
    [[nodiscard]] bool IsType(RVT_NODE_TYPE type) const { return type_ == type; }

    // Removes the node, with all it contains, from the document as it will be written.
    void Delete() { type_ = RVT_DELETED; }

    // The attributes and children of anything but an attribute.
    void AddAttribute(RVT_Node* attribute);
    RVT_Node* GetFirstAttribute();
    RVT_Node* GetNextAttribute();
    RVT_Node* GetFirstAttribute(RVT_Node_List_Elem*& pos) const;
    static RVT_Node* GetNextAttribute(RVT_Node_List_Elem*& pos);

    void AddChild(RVT_Node* child);
    RVT_Node* GetFirstChild();
    RVT_Node* GetNextChild();
    RVT_Node* GetFirstChild(RVT_Node_List_Elem*& pos) const;
    static RVT_Node* GetNextChild(RVT_Node_List_Elem*& pos);
    // Also true when all children are deleted.
    [[nodiscard]] bool HasChildren() const;
    // Empties the child list, for a caller that adds the children elsewhere. Returns the first of
    // them; "next" of each leads to the others.
    RVT_Node* ReleaseChildren();

    // Null for a top-level node and for an attribute.
    [[nodiscard]] RVT_Node* GetParent() const;
    void SetParent(RVT_Node* parent);

    // For the reader, which has both at hand: a name by its id, and a value that already lies in
    // memory kept for the whole run.
    void SetName(NameId name) { name_ = name; }
    void SetKeptValue(const char* value) { value_ = value; }

  protected:
    RVT_Node(RVT_NODE_TYPE type, bool is_attribute) : type_(type), is_attribute_(is_attribute) {}

  private:
    struct Lists;
    [[nodiscard]] Lists* GetLists();
    [[nodiscard]] const Lists* GetLists() const;

    const char* value_ = "";
    NameId name_ = 0;
    RVT_NODE_TYPE type_;
    bool is_attribute_;
};

// A document: its top-level nodes (XML declaration, comments, root element) in document order.
class RVT_XML_Tree {
  public:
    void AddChild(RVT_Node* node) { nodes_.AddNode(node); }
    RVT_Node* GetFirstChild() { return nodes_.GetFirstNode(); }
    RVT_Node* GetNextChild() { return nodes_.GetNextNode(); }
    RVT_Node* GetFirstChild(RVT_Node_List_Elem*& pos) const { return nodes_.GetFirstNode(pos); }
    static RVT_Node* GetNextChild(RVT_Node_List_Elem*& pos) {
        return RVT_Node_List::GetNextNode(pos);
    }

  private:
    RVT_Node_List nodes_;
};

// The system map of this run.
extern RVT_XML_Tree rvt_xml_tree;
