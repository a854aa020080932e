// Memory for the XML library. Setting it up takes a few hundred kilobytes, and touching that much
// fresh heap costs a short run a sixth of its time, so the first of it comes from the arena, which
// lies on a huge page; whatever is asked for beyond that comes from the heap.
//
// It is also where expansion is bounded: the library makes one of its large readers for each entity
// that it expands, but its own limit does not count those in the document type (parameter entities,
// attribute defaults).
#pragma once

#include <cstddef>
#include <xercesc/framework/MemoryManager.hpp>

class LibraryMemory : public xercesc::MemoryManager {
  public:
    // Bytes that are taken from the arena at most. They are never given back.
    static constexpr size_t kFromArena = size_t{768} << 10;

    // Readers that one document may need: somewhat more than the library's own limit on expansions,
    // which has the better message where it counts.
    static constexpr size_t kMostReaders = 60000;

    // Begins to count anew, for the next document.
    void CountReaders() { readers_ = 0; }
    [[nodiscard]] bool HasTooManyReaders() const { return readers_ > kMostReaders; }

    // Throws the library's OutOfMemoryException when there is no memory, or too many readers.
    void* allocate(XMLSize_t size) override;
    void deallocate(void* memory) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }

  private:
    std::byte* block_ = nullptr;
    size_t used_ = 0;
    size_t readers_ = 0;
};
