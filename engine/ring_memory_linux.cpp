// From the system where they are large: glibc's heap keeps what is freed, and after some instances
// have come and gone that is nearly all of their rings.
#include <sys/mman.h>

#include <cstring>
#include <new>

#include "engine/ring_memory.h"

namespace orvane::blocks::vesk {
namespace {

constexpr std::align_val_t cache_line{64};
constexpr std::size_t smallest_mapping = std::size_t{1} << 19;

}  // namespace

void* allocate_ring(std::size_t bytes) {
    if (bytes < smallest_mapping) return std::memset(::operator new(bytes, cache_line), 0, bytes);
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return memory;
}

void release_ring(void* memory, std::size_t bytes) noexcept {
    if (bytes < smallest_mapping)
        ::operator delete(memory, cache_line);
    else
        munmap(memory, bytes);
}

}  // namespace orvane::blocks::vesk
