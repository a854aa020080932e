#include "xml/library_memory.h"

#include <algorithm>
#include <new>
#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "base/arena.h"

// A reader is far larger than anything else that the library asks for at once, but for its few
// bytes of header.
static bool IsReader(size_t size) {
    constexpr size_t kHeader = 64;
    return size >= sizeof(xercesc::XMLReader) && size < sizeof(xercesc::XMLReader) + kHeader;
}

void* LibraryMemory::allocate(XMLSize_t size) {
    if (IsReader(size) && ++readers_ > kMostReaders) {
        throw xercesc::OutOfMemoryException();
    }
    constexpr size_t kAlignment = alignof(std::max_align_t);
    try {
        if (size > kFromArena - used_) {
            return ::operator new(size);
        }
        if (block_ == nullptr) {
            auto* block = static_cast<std::byte*>(arena::Allocate(kFromArena + 2 * kAlignment));
            block_ = block + kAlignment - reinterpret_cast<size_t>(block) % kAlignment;
        }
        void* memory = block_ + used_;
        used_ = std::min(used_ + (size + kAlignment - 1) / kAlignment * kAlignment, kFromArena);
        return memory;
    } catch (const std::bad_alloc&) {
        throw xercesc::OutOfMemoryException();
    }
}

void LibraryMemory::deallocate(void* memory) {
    auto* byte = static_cast<std::byte*>(memory);
    const bool from_arena = block_ != nullptr && byte >= block_ && byte < block_ + kFromArena;
    if (!from_arena) {
        ::operator delete(memory);
    }
}
