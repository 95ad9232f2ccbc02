// The memory of large rings.
#pragma once

#include <cstddef>
#include <memory>

namespace orvane::blocks::vesk {

// Zeros, aligned to a cache line. Every page is there already, so that the audio thread is not the
// first to touch one. Throws std::bad_alloc.
void* allocate_ring(std::size_t bytes);
// The whole of it goes back to the system, and not only to the heap.
void release_ring(void* memory, std::size_t bytes) noexcept;

struct RingRelease {
    std::size_t bytes = 0;

    void operator()(void* memory) const noexcept { release_ring(memory, bytes); }
};

template <class T>
using RingStorage = std::unique_ptr<T[], RingRelease>;

template <class T>
RingStorage<T> ring_of(std::size_t elements) {
    const std::size_t bytes = elements * sizeof(T);
    return {static_cast<T*>(allocate_ring(bytes)), RingRelease{bytes}};
}

}  // namespace orvane::blocks::vesk
