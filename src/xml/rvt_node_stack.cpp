#include "xml/rvt_node_stack.h"

#include "base/error.h"
#include "run/rvt_exit.h"

[[noreturn]] static void EndRun(const char* text) {
    Complain(text);
    ClearError();
    RVTExit(ExitCode::kNodeStack);
}

void RVT_Node_Stack::Push(RVT_Node* node) {
    if (top_ + 1 == kDepth) {
        EndRun("RVT_Node_Stack::Push(): stack overflow\n");
    }
    entries_.at(static_cast<size_t>(++top_)) = node;
}

RVT_Node* RVT_Node_Stack::Pop() {
    if (IsEmpty()) {
        EndRun("RVT_Node_Stack::Pop(): stack underflow\n");
    }
    return entries_.at(static_cast<size_t>(top_--));
}

RVT_Node* RVT_Node_Stack::Peek() const {
    return IsEmpty() ? nullptr : entries_.at(static_cast<size_t>(top_));
}
