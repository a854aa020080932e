// The open elements while a document is read: those whose start tag has been seen and whose end tag
// has not.
#pragma once

#include <array>

#include "xml/rvt_node.h"

class RVT_Node_Stack {
  public:
    static constexpr size_t kDepth = 300;

    // False on a full stack.
    [[nodiscard]] bool Push(RVT_Node* node);
    // Removes the top node. False on an empty stack.
    [[nodiscard]] bool Pop();
    // The top node, or null on an empty stack.
    [[nodiscard]] RVT_Node* Peek() const { return IsEmpty() ? nullptr : entries_.at(count_ - 1); }
    [[nodiscard]] bool IsEmpty() const { return count_ == 0; }

  private:
    std::array<RVT_Node*, kDepth> entries_{};
    size_t count_ = 0;
};
