#include "xml/library_memory.h"

#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "base/arena.h"

static constexpr size_t kAlignment = alignof(std::max_align_t);

// A reader is far larger than anything else that the library asks for at once, but for its few
// bytes of header.
static_assert(sizeof(xercesc::XMLReader) > size_t{64} << 10U);
static bool IsReader(size_t size) {
    constexpr size_t kHeader = 64;
    return size >= sizeof(xercesc::XMLReader) && size < sizeof(xercesc::XMLReader) + kHeader;
}

void LibraryMemory::Begin(Reading& reading) {
    constexpr size_t kReserve = size_t{64} << 10;
    reading_ = &reading;
    readers_ = 0;
    limit_ = reading.rules == DocumentRules::kForeign
                 ? held_ + kMostForAnyDocument + kMostForEachByte * reading.size
                 : SIZE_MAX;
    if (reserve_ == nullptr) {
        reserve_ = std::make_unique_for_overwrite<std::byte[]>(kReserve);
    }
}

void LibraryMemory::Fail(const char* why) {
    reserve_.reset();
    limit_ = SIZE_MAX;
    reading_->locator = nullptr;
    reading_->Fail(why);
}

std::byte* LibraryMemory::AllocateFromArena(size_t size) {
    if (block_ == nullptr) {
        auto* block = static_cast<std::byte*>(arena::Allocate(kFromArena + 2 * kAlignment));
        block_ = block + kAlignment - reinterpret_cast<size_t>(block) % kAlignment;
    }
    std::byte* memory = block_ + used_;
    used_ = std::min(used_ + (size + kAlignment - 1) / kAlignment * kAlignment, kFromArena);
    return memory;
}

// Counts what a block really takes, which the heap knows anyway: the library does not say how large
// a block is that it frees.
void* LibraryMemory::AllocateFromHeap(size_t size) {
    void* memory = held_ > limit_ || size > limit_ - held_ ? nullptr : malloc(size);
    if (memory == nullptr) {
        Fail();
        throw xercesc::OutOfMemoryException();
    }
    held_ += malloc_usable_size(memory);
    return memory;
}

void* LibraryMemory::allocate(XMLSize_t size) {
    if (IsReader(size) && ++readers_ > kMostReaders) {
        Fail("too many entity expansions");
        throw xercesc::OutOfMemoryException();
    }
    try {
        return size > kFromArena - used_ ? AllocateFromHeap(size) : AllocateFromArena(size);
    } catch (const std::bad_alloc&) {
        Fail();
        throw xercesc::OutOfMemoryException();
    }
}

void LibraryMemory::deallocate(void* memory) {
    auto* byte = static_cast<std::byte*>(memory);
    const bool from_arena = block_ != nullptr && byte >= block_ && byte < block_ + kFromArena;
    if (!from_arena) {
        held_ -= malloc_usable_size(memory);
        free(memory);
    }
}

void LibraryMemory::panic(PanicReasons) {
    Fail();
    throw ReadingFailed();
}
