// Text that a shell reads back as it was: words of a command line and here-documents.
#pragma once

#include <string>
#include <string_view>

// "word" as it stands in a logged command line. "is_program" marks the first word. Program and
// option words stand bare where they can, all others in double quotes; what the shell would expand
// or drop is kept by backslashes:
//     -name      lab1 -> "lab1"      cost $5 -> "cost \$5"
std::string ShellWord(std::string_view word, bool is_program);

// Appends "input" to "text" as a here-document, from "<<EOF" and its line end to the delimiter's
// line end. Every line of the input comes back unchanged; a last line without its newline gets one.
void AppendHereDocument(std::string_view input, std::string& text);
