// Text for standard error. It is kept and printed last, when the run holds no lock any more:
// whoever reads it, or does not, holds up nobody but this run.
#pragma once

#include <string_view>

// Keeps "text", whole lines.
void Complain(std::string_view text);

// Keeps a message that may hold foreign text, as one line of tqs: "tqs: MESSAGE".
void ComplainOnOneLine(std::string_view message);

// Prints what was kept, in its order; what cannot be printed is lost. With "is_foreign" no control
// character but the line feed reaches a terminal.
void PrintComplaints(bool is_foreign = false);
