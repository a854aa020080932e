// Memory for the XML library. Setting it up takes a few hundred kilobytes, and touching that much
// fresh heap costs a short run a sixth of its time, so the first of it comes from the arena, which
// lies on a huge page; whatever is asked for beyond that comes from the heap.
#pragma once

#include <cstddef>
#include <xercesc/framework/MemoryManager.hpp>

class LibraryMemory : public xercesc::MemoryManager {
  public:
    // Bytes that are taken from the arena at most. They are never given back.
    static constexpr size_t kFromArena = size_t{768} << 10;

    // Throws the library's OutOfMemoryException when there is no memory.
    void* allocate(XMLSize_t size) override;
    void deallocate(void* memory) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }

  private:
    std::byte* block_ = nullptr;
    size_t used_ = 0;
};
