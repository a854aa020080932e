#include "xml/rvt_node_stack.h"

bool RVT_Node_Stack::Push(RVT_Node* node) {
    if (count_ == kDepth) {
        return false;
    }
    entries_.at(count_++) = node;
    return true;
}

bool RVT_Node_Stack::Pop() {
    if (IsEmpty()) {
        return false;
    }
    --count_;
    return true;
}
