// The document tree: what the reader builds, the commands change and the writer prints.
//
// Nodes are untyped; a kind tells elements, attributes, comments and the XML declaration apart.
// Removing something marks its node RVT_DELETED: it keeps its place, its attributes and its
// children, walks still return it, and the writer leaves it out. Nodes live until the process ends.
//
// How nodes lie in memory is known here alone: an attribute takes 16 bytes, and the attributes of a
// node lie side by side; any other node takes 40 and stands in one list of children at a time. A
// map has three attributes to an element, and touching memory costs a run more than parsing.
#pragma once

#include <cstddef>
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

// A place in a walk over attributes or children, held by the caller.
struct RVT_Node_List_Elem {};

// Nodes in the order in which they were added; attributes stand in none. The list does not own
// them.
class RVT_Node_List {
  public:
    // Appends a node, which must not stand in another list. A walk that is under way reaches it.
    void AddNode(RVT_Node* node);

    // A walk: null when there is no (further) node.
    RVT_Node* GetFirstNode(RVT_Node_List_Elem*& pos) const;
    static RVT_Node* GetNextNode(RVT_Node_List_Elem*& pos);

    [[nodiscard]] bool IsEmpty() const { return head_ == nullptr; }
    // Forgets the nodes, which stay as they are.
    void Empty() { head_ = tail_ = nullptr; }

  private:
    RVT_Node* head_ = nullptr;
    RVT_Node* tail_ = nullptr;
};

class RVT_Node : public RVT_Node_List_Elem {
  public:
    // A new node, no attribute, with empty name and value, in memory of its own for the rest of the
    // run. Throws std::bad_alloc when there is none.
    static RVT_Node* Create(RVT_NODE_TYPE type);

    RVT_Node& operator=(const RVT_Node&) = delete;

    // Both copy the text; a value ends at its first zero byte, which no XML text holds. Elements
    // and the XML declaration have no value.
    void SetName(std::string_view name) { name_ = InternName(name); }
    void SetValue(std::string_view value);

    [[nodiscard]] std::string_view GetName() const { return NameText(name_); }
    // The text stays valid for the whole run, also when the node gets another value.
    [[nodiscard]] const char* GetValue() const { return has_attributes_ ? "" : value_; }

    // Exact comparisons.
    [[nodiscard]] bool IsName(std::string_view name) const { return GetName() == name; }
    [[nodiscard]] bool IsName(NameId name) const { return name_ == name; }
    [[nodiscard]] bool HasNameOf(const RVT_Node& other) const { return name_ == other.name_; }
    // Texts that are kept once lie in one place.
    [[nodiscard]] bool HasValueOf(const RVT_Node& other) const {
        return GetValue() == other.GetValue() || IsValue(other.GetValue());
    }
    [[nodiscard]] bool IsValue(std::string_view value) const { return value == GetValue(); }
    [[nodiscard]] bool IsType(RVT_NODE_TYPE type) const { return type_ == type; }

    // Removes the node, with all it contains, from the document as it will be written.
    void Delete() { type_ = RVT_DELETED; }

    // Appends "count" new attributes, with empty names and values, and returns the first of them;
    // the others lie behind it. Those that the node had move, so pointers to them must not be kept.
    // Null for no attributes, and for a node that has none.
    RVT_Node* AddAttributes(size_t count);
    RVT_Node* GetFirstAttribute(RVT_Node_List_Elem*& pos) const;
    static RVT_Node* GetNextAttribute(RVT_Node_List_Elem*& pos);

    // An attribute has no children, and is given none.
    void AddChild(RVT_Node* child);
    RVT_Node* GetFirstChild(RVT_Node_List_Elem*& pos) const;
    static RVT_Node* GetNextChild(RVT_Node_List_Elem*& pos) {
        return RVT_Node_List::GetNextNode(pos);
    }
    // Also true when all children are deleted.
    [[nodiscard]] bool HasChildren() const;
    // Empties the child list, for a caller that adds the children elsewhere. Returns the list.
    RVT_Node_List ReleaseChildren();

    // A copy with all below it, without what is deleted. Texts are shared.
    [[nodiscard]] RVT_Node* Copy() const;

    // For the reader, which has both at hand: a name by its id, and a value that already lies in
    // memory kept for the whole run.
    void SetName(NameId name) { name_ = name; }
    void SetKeptValue(const char* value) { value_ = value; }

  private:
    friend class RVT_Node_List;
    struct Listed;

    // A new attribute.
    RVT_Node() : type_(RVT_ATTRIBUTE) {}
    RVT_Node(const RVT_Node&) = default;
    [[nodiscard]] Listed* AsListed();
    [[nodiscard]] const Listed* AsListed() const;

    union {
        const char* value_ = "";
        RVT_Node* attributes_;
    };
    NameId name_ = 0;
    RVT_NODE_TYPE type_;
    bool has_attributes_ = false;  // which of the two the union holds
    bool is_listed_ = false;       // no attribute
    bool is_followed_ = false;     // of an attribute: another one lies behind it
};

// A document: its top-level nodes (XML declaration, comments, root element) in document order.
class RVT_XML_Tree {
  public:
    void AddChild(RVT_Node* node) { nodes_.AddNode(node); }
    RVT_Node* GetFirstChild(RVT_Node_List_Elem*& pos) const { return nodes_.GetFirstNode(pos); }
    static RVT_Node* GetNextChild(RVT_Node_List_Elem*& pos) {
        return RVT_Node_List::GetNextNode(pos);
    }
    // As RVT_Node::Copy.
    [[nodiscard]] RVT_XML_Tree Copy() const;

  private:
    RVT_Node_List nodes_;
};
