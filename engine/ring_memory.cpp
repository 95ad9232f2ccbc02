// From the heap, where it gives large blocks back by itself or a checker watches over it.
#include "engine/ring_memory.h"

#include <cstring>
#include <new>

namespace orvane::blocks::vesk {
namespace {

constexpr std::align_val_t cache_line{64};

}  // namespace

void* allocate_ring(std::size_t bytes) {
    return std::memset(::operator new(bytes, cache_line), 0, bytes);
}

void release_ring(void* memory, std::size_t) noexcept {
    ::operator delete(memory, cache_line);
}

}  // namespace orvane::blocks::vesk
