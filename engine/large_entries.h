// Where in a pair of rings entries are so large that sums of them might not fit in 63 bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// Ring indices that are looked at together; a stretch begins at a multiple of this.
constexpr std::int64_t stretch = 256;

// Entries are that large at speeds of eleven octaves and more. A ring keeps them until it has
// turned once.
class LargeEntries {
public:
    explicit LargeEntries(std::uint64_t ring_size);

    // After n pushes of entries up to largest, which the newest indices from head on hold.
    VESK_INLINE void push(float largest, std::uint64_t head, std::uint64_t n) noexcept {
        pushes += n;
        if (!(largest < ring_limit)) [[unlikely]]
            note(largest, head, n);
    }
    // What was pushed so far is not read any more.
    void forget() noexcept { in_ring_until = 0; }

    // Whether any sum of the rings' entries fits, and each entry in the 53 bits of a double.
    VESK_INLINE bool none() const noexcept { return pushes >= in_ring_until; }
    // Whether any sum of the i-th stretch's entries fits.
    VESK_INLINE bool none_in_stretch(std::int64_t i) const noexcept {
        return pushes >= in_stretch_until[static_cast<std::size_t>(i)];
    }

private:
    std::uint64_t size;        // of a ring
    float ring_limit;          // none() holds while all entries are below
    std::uint64_t pushes = 0;  // ever
    // The number of pushes that overwrite the last large entry.
    std::uint64_t in_ring_until = 0;
    std::vector<std::uint64_t> in_stretch_until;

    void note(float largest, std::uint64_t head, std::uint64_t n) noexcept;
};

}  // namespace orvane::blocks::vesk
