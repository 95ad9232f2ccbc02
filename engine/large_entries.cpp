#include "engine/large_entries.h"

namespace orvane::blocks::vesk {

constexpr float largest_sum = 0x1p62f;

LargeEntries::LargeEntries(std::uint64_t ring_size)
    : size(ring_size),
      ring_limit(min(largest_sum / static_cast<float>(ring_size), 0x1p51f)),
      in_stretch_until(static_cast<std::size_t>(ring_size / stretch + 1)) {}

void LargeEntries::note(float largest, std::uint64_t head, std::uint64_t n) noexcept {
    in_ring_until = pushes + size;
    if (largest < largest_sum / static_cast<float>(stretch)) return;
    for (std::uint64_t k = 0; k < n; ++k)
        in_stretch_until[static_cast<std::size_t>((head + k) % size / stretch)] = in_ring_until;
}

}  // namespace orvane::blocks::vesk
