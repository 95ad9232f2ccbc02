#include "engine/circular_buffer.h"

#include <atomic>

namespace orvane::blocks::vesk {

std::size_t next_ring_offset() noexcept {
    // Shared by all engines, but only where their rings lie depends on it. Steps that are prime to
    // the 64 lines of a page, so that 64 rings in a row all differ.
    constexpr std::size_t cache_line = 64;
    constexpr std::size_t lines_in_page = 64;
    constexpr std::size_t step = 13;
    static constinit std::atomic<std::size_t> rings_made{0};
    const std::size_t nth = rings_made.fetch_add(1, std::memory_order_relaxed);
    return (nth * step % lines_in_page) * cache_line;
}

}  // namespace orvane::blocks::vesk
