// What the fuzz targets share: the program's functions called in one process, in an installation
// below the working directory.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/exit_code.h"
#include "xml/rvt_node.h"

void PutFile(const std::string& path, std::string_view content);
std::string GetFile(const std::string& path);

// Runs a step; the code with which it ended the run, or none when it returned. The text of outputs
// that an earlier step left is gone then.
std::optional<ExitCode> EndOf(const std::function<void()>& step);
// Reads "path" as a map; false when it is refused.
bool CanRead(const char* path, RVT_XML_Tree& tree);

// Ends the process, as a finding, when a promise is not kept.
void Require(bool kept, const char* promise);

// All that is left of a tree, a line for each node. White space in values is alike, and over-long
// values are cut as they are in a map.
std::string Dump(const RVT_XML_Tree& tree);
