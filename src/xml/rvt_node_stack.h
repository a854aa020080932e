// The open elements while a document is read: those whose start tag has been seen and whose end tag
// has not. A document nested deeper than kDepth ends the run.
#pragma once

#include <array>

#include "xml/rvt_node.h"

class RVT_Node_Stack {
  public:
    static constexpr int kDepth = 300;

    void Reset() { top_ = -1; }
    // On a full stack, says so on standard error and ends the run with kNodeStack, the error
    // message empty.
    void Push(RVT_Node* node);
    // Removes the top node and returns it; on an empty stack ends the run as Push does.
    RVT_Node* Pop();
    // The top node, or null on an empty stack.
    [[nodiscard]] RVT_Node* Peek() const;
    [[nodiscard]] bool IsEmpty() const { return top_ == -1; }

  private:
    std::array<RVT_Node*, kDepth> entries_{};
    int top_ = -1;
};
