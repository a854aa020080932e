#include "base/arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace arena {

// Memory is taken in blocks of huge pages, where the kernel offers them: touching fresh plain pages
// costs more than parsing what is put into them. Blocks double from the first size to the last, so
// that neither a small map nor the end of a large one asks for much more than it uses.
static constexpr size_t kHugePage = size_t{2} << 20;
static constexpr size_t kLargestBlock = size_t{16} << 20;

// The free memory of the present block. Objects grow from its front, at pointer alignment; text
// grows from its back, without alignment.
static struct {
    std::byte* front = nullptr;
    std::byte* back = nullptr;
    size_t next_block = kHugePage;
} memory;

static size_t Left() {
    return static_cast<size_t>(memory.back - memory.front);
}

static void NewBlock(size_t needed) {
    const size_t size =
        std::max(memory.next_block, (needed + kHugePage - 1) / kHugePage * kHugePage);
    memory.next_block = std::min(memory.next_block * 2, kLargestBlock);
    // One page more, so that a 2 MB boundary lies within; the rest is never touched.
    void* mapping = mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    const auto misaligned = reinterpret_cast<uintptr_t>(mapping) % kHugePage;
    memory.front =
        static_cast<std::byte*>(mapping) + (misaligned == 0 ? 0 : kHugePage - misaligned);
    memory.back = memory.front + size;
    static_cast<void>(madvise(memory.front, size, MADV_HUGEPAGE));
}

void* Allocate(size_t size) {
    size = (size + alignof(void*) - 1) / alignof(void*) * alignof(void*);
    if (Left() < size) {
        NewBlock(size);
    }
    return std::exchange(memory.front, memory.front + size);
}

char* AllocateText(size_t size) {
    if (Left() < size + 1) {
        NewBlock(size + 1);
    }
    memory.back -= size + 1;
    memory.back[size] = std::byte{0};
    return reinterpret_cast<char*>(memory.back);
}

const char* Copy(std::string_view text) {
    char* copy = AllocateText(text.size());
    std::copy(text.begin(), text.end(), copy);
    return copy;
}

}  // namespace arena
