// What the fuzz targets share: the program's functions called in one process, in an installation
// below the working directory.
#pragma once

#include <string>
#include <string_view>

#include "xml/rvt_node.h"

void PutFile(const std::string& path, std::string_view content);
std::string GetFile(const std::string& path);

// Frees the buffers of outputs, which the program never does.
void FreeBuffers();
// Reads "path" as a map; false when it is refused.
bool CanRead(const char* path, RVT_XML_Tree& tree);

// Ends the process, as a finding, when a promise is not kept.
void Require(bool kept, const char* promise);

// What is written of a tree. White space is alike, however much there is.
std::string Dump(const RVT_XML_Tree& tree);
