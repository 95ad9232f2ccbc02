// The scan that finds a read position: one channel's cursor, moved through a ring of entries.
//
// After every push the scan looks for the entry in which the running sum, newest entry first,
// exceeds the span plus half of the newest entry. Entries are never negative, so there is one such
// entry; its offset and what the sum before it lacks, the remainder, give the read position:
//
//   position = remainder / entry + offset - 1.5        samples on the line, at(0) being one old
//
// For example a span of 6 while the speed, which is the entry in crossfade mode, doubles. The bar
// is before the entry at the cursor:
//
//   entries, newest first    span + half   offset   sum   remainder   position
//   1 1 1 1 1 1 | 1 1 1         6.5          6       6      0.5         5       = 6 / 1 - 1
//   2 1 1 1 1 1 | 1 1 1         7            6       7      0           4.5
//   2 2 1 1 1 | 1 1 1 1         7            5       7      0           3.5
//   2 2 2 1 | 1 1 1 1 1         7            4       7      0           2.5
//   2 2 2 | 2 1 1 1 1 1         7            3       6      1           2       = 6 / 2 - 1
//
// The ring holds no entries but their totals: at(k) is the sum of the entry k pushes old and of
// all before it. An entry is the difference of two neighbours, a sum of entries that of any two,
// and the cursor's offset is the largest one whose total reaches
//
//   target = newest total - half of the newest entry - span
//
// So a frame's offset follows from the ring alone, not from that of the frame before, which only
// tells where to look: four frames are found at once, and a distant one by bisection.
//
// Totals wrap at 2^64. Their differences are exact as long as they fit in 63 bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/lanes.h"
#include "engine/large_entries.h"

namespace orvane::blocks::vesk {

constexpr float fixed_point_one = 4294967296.0f;  // 32 fractional bits

// They keep every sum of entries within signed 64 bits and act from 30 octaves on: the largest
// float below 2^62 for an entry, 2^61 for a span.
constexpr float max_entry = 4611685743549480960.0f;
constexpr float max_span = 2305843009213693952.0f;

// A not-a-number becomes the limit.
template <class T>
VESK_INLINE T limited_entry(T x) noexcept {
    return min(x, broadcast<T>(max_entry));
}
VESK_INLINE float limited_span(float x) noexcept {
    return min(x, max_span);
}

using Total = std::uint64_t;

// a - b, where it fits in 63 bits.
VESK_INLINE std::int64_t difference(Total a, Total b) noexcept {
    return static_cast<std::int64_t>(a - b);
}

// One channel's read positions, frame by frame, before the division.
struct ReadPositions {
    float remainder[max_block];      // fixed point
    float entry[max_block];          // the entry at the cursor, fixed point
    std::int32_t offset[max_block];  // the cursor's

    VESK_INLINE void copy(const ReadPositions& other, std::size_t first, std::size_t end) noexcept {
        for (std::size_t i = first; i < end; ++i) {
            remainder[i] = other.remainder[i];
            entry[i] = other.entry[i];
            offset[i] = other.offset[i];
        }
    }
};

// One channel's scan of a block whose entries are pushed already. Two pointers into the ring follow
// the frames: newest to a frame's newest total, cursor to the one at offset. Both move as the ring
// grows, towards lower addresses.
struct Scan {
    const Total* const totals;
    const std::int64_t size;
    const Total span;
    std::int64_t offset;
    const Total* newest = nullptr;
    const Total* cursor = nullptr;
    // Whole samples by which the offset is expected to move within four frames: -1, 0 or 1.
    std::int64_t drift = 0;

    VESK_INLINE Scan(const CircularBuffer<Total>& ring, std::int64_t at, float samples) noexcept
        : totals(ring.storage.get()),
          size(static_cast<std::int64_t>(ring.size)),
          span(static_cast<Total>(
              static_cast<std::int64_t>(limited_span(samples * fixed_point_one)))),
          offset(at) {}

    // To the total at offset k; those at the next max_block offsets follow it.
    VESK_INLINE const Total* at(std::int64_t head, std::int64_t k) const noexcept {
        const std::int64_t i = head + k;
        return totals + (i >= size ? i - size : i);
    }
    VESK_INLINE void set_pointers(std::int64_t head) noexcept {
        newest = totals + head;
        cursor = at(head, offset);
    }
    // How many frames' steps are sure to stay within the filled history and clear of the ring's
    // start. A step moves the cursor by four at most.
    VESK_INLINE std::int64_t free_steps(std::int64_t filled) const noexcept {
        const std::int64_t within = min((offset - 1) / 4, filled - 1 - offset);
        const std::int64_t clear = min(newest - totals, (cursor - totals) / 4);
        return max(min(within, clear), std::int64_t{0});
    }

    // What the total at the cursor has to reach.
    template <class T>
    VESK_INLINE T target_of(const Total* newest_of_frame) const noexcept {
        const T total = load<T>(newest_of_frame);
        return total - ((total - load<T>(newest_of_frame + 1)) >> 1) - span;
    }

    // What the scan finds for four frames at once, newest first.
    struct Four {
        LongQuad remainder;
        LongQuad entry;
        IntQuad offset;
        LongQuad outside;  // negative where it is none of the three offsets that are looked at
    };
    // Looks at the offset before these frames moved by the drift, at one less and at one more.
    VESK_INLINE Four find_four() const noexcept {
        using Totals = UnsignedLongQuad;
        const Total* const nearest = cursor - 4 + drift - 1;
        const Totals target = target_of<Totals>(newest - 4);
        const auto remainder_at = [&](int k) VESK_LAMBDA {
            return __builtin_bit_cast(LongQuad, load<Totals>(nearest + k) - target);
        };
        // Remainders never grow from an entry to the next older one.
        const LongQuad r0 = remainder_at(0);
        const LongQuad r1 = remainder_at(1);
        const LongQuad r2 = remainder_at(2);
        const LongQuad r3 = remainder_at(3);
        const LongQuad found = r2 < 0 ? (r1 < 0 ? r0 : r1) : r2;
        const LongQuad older = r2 < 0 ? (r1 < 0 ? r1 : r2) : r3;
        const IntQuad offsets = static_cast<std::int32_t>(offset + drift + 1) +
                                (high_halves(r1) >> 31) + (high_halves(r2) >> 31);
        return {found, found - older, offsets, r0 | ~r3};
    }
    VESK_INLINE void accept(const Four& four, std::size_t frame, ReadPositions& out) noexcept {
        const auto in_order = [](LongQuad x) VESK_LAMBDA {
            return reverse<sizeof(float)>(to_float(__builtin_bit_cast(UnsignedLongQuad, x)));
        };
        store(out.remainder + frame, in_order(four.remainder));
        store(out.entry + frame, in_order(four.entry));
        store(out.offset + frame, reverse<sizeof(float)>(four.offset));
        newest -= 4;
        cursor += four.offset[0] - offset - 4;
        offset = four.offset[0];
    }

    // The next frame: the cursor's entry stays the same or becomes one that is up to four newer,
    // as at speeds within two octaves. Which one is unpredictable, so none is branched to. False if
    // it is none of them.
    VESK_INLINE bool step(std::size_t frame, ReadPositions& out) noexcept {
        --newest;
        const Total target = target_of<Total>(newest);
        const auto beyond = [&](int k) VESK_LAMBDA { return difference(cursor[k], target) >> 63; };
        const std::int64_t newer = beyond(0) + beyond(-1) + beyond(-2) + beyond(-3);
        cursor += newer;
        offset += 1 + newer;
        const auto remainder = cursor[0] - target;
        const auto entry = cursor[0] - cursor[1];
        record(static_cast<std::int64_t>(remainder), static_cast<std::int64_t>(entry), frame, out);
        return remainder < entry;
    }
    VESK_INLINE void record(std::int64_t remainder, std::int64_t entry, std::size_t frame,
                            ReadPositions& out) const noexcept {
        out.remainder[frame] = static_cast<float>(remainder);
        out.entry[frame] = static_cast<float>(entry);
        out.offset[frame] = static_cast<std::int32_t>(offset);
    }

    // Moves to the entry, or to either end of the history: to the largest offset from 1 to
    // filled - 1 whose remainder is not negative, or to 1.
    //
    // A history too short for the span ends the search at its oldest entry. The remainder then
    // exceeds the entry and the division extrapolates: right at once after a reset.
    VESK_INLINE void search(std::int64_t head, std::int64_t filled, const LargeEntries& large,
                            std::size_t frame, ReadPositions& out) noexcept {
        const Total target = target_of<Total>(totals + head);
        const auto reaches = [&](std::int64_t k)
                                 VESK_LAMBDA { return difference(*at(head, k), target) >= 0; };
        std::int64_t low = offset;
        std::int64_t high = low + 1;
        // A new delay may be seconds away, so the steps double until they have passed it. What is
        // newer than the cursor adds up to the last frame's span and the newest entry, so its sums
        // fit at any speed.
        for (std::int64_t step = 1; low > 1 && !reaches(low); step *= 2) {
            high = low;
            low = max(low - step, std::int64_t{1});
        }
        if (large.none()) [[likely]] {
            for (std::int64_t step = 1; high < filled && reaches(high); step *= 2) {
                low = high;
                high = min(high + step, filled);
            }
        } else {
            while (high < filled && reaches(high)) {
                const std::int64_t index = at(head, high) - totals;
                const bool skip = index % stretch == 0 && index + stretch <= size &&
                                  high + stretch < filled &&
                                  large.none_in_stretch(index / stretch) && reaches(high + stretch);
                low = high + (skip ? stretch : 0);
                high = low + 1;
            }
        }
        while (high - low > 1) {
            const std::int64_t between = low + (high - low) / 2;
            (reaches(between) ? low : high) = between;
        }
        offset = low;
        const Total* const found = at(head, offset);
        record(difference(found[0], target), difference(found[0], found[1]), frame, out);
    }
};

}  // namespace orvane::blocks::vesk
