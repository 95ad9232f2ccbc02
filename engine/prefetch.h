// Prefetching: memory that a block will use is requested before the block is computed.
//
// Instances that play in turn evict each other's working set from the caches, and one engine reads
// and writes more streams than a processor's own prefetcher tracks. So a block prefetches all its
// streams at its start; data for the later stages arrives while the earlier ones compute.
#pragma once

#include <cstddef>

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// Frames. A shorter block uses less than a cache line (64 bytes) of each stream.
constexpr std::size_t min_prefetched_block = 8;

// Prefetches n elements from p on into the second-level cache and those above; the streams of a
// block would overflow the first level. A pointer outside any allocation is harmless.
template <class T>
VESK_INLINE void prefetch(const T* p, std::size_t n) noexcept {
    constexpr std::size_t cache_line = 64;
    constexpr int for_reading = 0;
    constexpr int second_level = 2;
    for (std::size_t i = 0; i < n * sizeof(T); i += cache_line)
        __builtin_prefetch(reinterpret_cast<const char*>(p) + i, for_reading, second_level);
}

}  // namespace orvane::blocks::vesk
