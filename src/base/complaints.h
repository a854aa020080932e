// Text for standard error. It is kept and printed last, when the run holds no lock any more:
// whoever reads it, or does not, holds up nobody but this run.
#pragma once

#include <string_view>

// Keeps "text", whole lines.
void Complain(std::string_view text);

// Prints what was kept, in its order; what cannot be printed is lost.
void PrintComplaints();
