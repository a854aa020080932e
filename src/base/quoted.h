// Text in double quotes, as it is shown to people and written in JSON.
#pragma once

#include <string>
#include <string_view>

// "text" in double quotes on one line: a quote and a backslash have a backslash before them,
// control characters and line separators are \t, \n, \r or \u001b.
std::string Quoted(std::string_view text);
// The same of its beginning, for a message.
std::string Shortened(std::string_view text);
// "json" with \u escapes for the control characters beyond ASCII, which JSON leaves as they are.
std::string WithEscapes(std::string_view json);
