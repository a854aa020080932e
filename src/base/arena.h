// Memory that lives until the process ends and is never given back piece by piece: the document
// tree (a map of 50,000 consoles has two and a half million nodes, and nothing frees any of them)
// and a few large buffers.
#pragma once

#include <cstddef>
#include <string_view>

namespace arena {

// "size" bytes, aligned for a pointer, all zero. Throws std::bad_alloc when there is no memory.
void* Allocate(size_t size);

// A copy of "text" with a terminating zero. Throws as Allocate does.
const char* Copy(std::string_view text);

// Room for "size" characters and a terminating zero, which is set; the caller fills the rest.
char* AllocateText(size_t size);

}  // namespace arena
