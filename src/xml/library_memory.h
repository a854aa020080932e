// Memory for the XML library. Setting it up takes a few hundred kilobytes, and touching that much
// fresh heap costs a short run a sixth of its time, so the first of it comes from the arena, which
// lies on a huge page; whatever is asked for beyond that comes from the heap.
//
// It is also where a document is bounded. The library makes one of its large readers for each
// entity that it expands, but its own limit does not count those in the document type (parameter
// entities, attribute defaults). And a content model of a few hundred bytes can make it build a
// table of gigabytes.
#pragma once

#include <cstddef>
#include <memory>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/PanicHandler.hpp>

#include "xml/rvt_xml_handler.h"

class LibraryMemory : public xercesc::MemoryManager, public xercesc::PanicHandler {
  public:
    // Bytes that are taken from the arena at most. They are never given back.
    static constexpr size_t kFromArena = size_t{768} << 10;

    // Readers that one document may need: somewhat more than the library's own limit on expansions,
    // which has the better message where it counts.
    static constexpr size_t kMostReaders = 60000;

    // Bytes of the heap that a foreign document may need, besides some for each byte of its own.
    static constexpr size_t kMostForAnyDocument = size_t{64} << 20;
    static constexpr size_t kMostForEachByte = 32;

    // Begins to count anew, for the next document, which must stay until it is read.
    void Begin(Reading& reading);

    // Memory for the library. Where there is none, or no more for this document, or too many
    // readers are asked for, the reading has failed, and the library's OutOfMemoryException is
    // thrown. What the library then asks for to clean up, in destructors, it gets without a limit.
    void* allocate(XMLSize_t size) override;
    void deallocate(void* memory) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }

    // Everything that the library needs at its start, or for its first schema, is part of the
    // program, so when it cannot go on there, it lacks memory. Leaves by ReadingFailed.
    void panic(PanicReasons reason) override;

    // Notes that the reading has failed for lack of memory or "why", with no place in the document:
    // the parser may be in the middle of anything.
    void Fail(const char* why = "out of memory");

  private:
    std::byte* AllocateFromArena(size_t size);
    void* AllocateFromHeap(size_t size);

    Reading* reading_ = nullptr;
    std::byte* block_ = nullptr;
    size_t used_ = 0;
    size_t readers_ = 0;
    size_t held_ = 0;  // bytes of the heap in use
    size_t limit_ = 0;
    std::unique_ptr<std::byte[]> reserve_;  // for the message and the log
};
