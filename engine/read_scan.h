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
// A push makes every entry one older. So the cursor's entry stays the same or becomes the one or
// two newer, unless speed or span change abruptly; only then does the scan have to search.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/lanes.h"

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

// A read position on a ring of entries, in whole entries.
struct Cursor {
    std::uint64_t offset = 0;
    std::int64_t sum = 0;  // fixed point, of the entries at(0) to at(offset - 1)

    VESK_INLINE bool operator==(const Cursor& other) const noexcept {
        return offset == other.offset && sum == other.sum;
    }
};

// One channel's read positions, frame by frame, before the division.
struct ReadPositions {
    float remainder[max_block];      // fixed point
    float entry[max_block];          // the entry at the cursor, fixed point
    std::int32_t offset[max_block];  // the cursor's

    // To those of frames first to end - 1: amount to the first, and one more to each later one.
    VESK_INLINE void add_to_offsets(std::int64_t amount, std::size_t first,
                                    std::size_t end) noexcept {
        std::int32_t* const offsets = offset + first;
        for_each_mono_vector(end - first, [&]<class T>(std::size_t i) VESK_LAMBDA {
            const Integers<T> amounts = static_cast<std::int32_t>(amount) + value_indices<T>(i);
            store(offsets + i, load<Integers<T>>(offsets + i) + amounts);
        });
    }
    VESK_INLINE void copy(const ReadPositions& other, std::size_t first, std::size_t end) noexcept {
        for (std::size_t i = first; i < end; ++i) {
            remainder[i] = other.remainder[i];
            entry[i] = other.entry[i];
            offset[i] = other.offset[i];
        }
    }
};

// Entries that a search skips at once: by their sum added up on the spot, and by a sum that is
// kept. Both begin at multiples of their length.
constexpr std::int64_t stride = 8;
constexpr std::int64_t stretch = 256;

// The sum of Count entries; negative where it might not fit in 63 bits.
template <std::int64_t Count>
VESK_INLINE std::int64_t sum_of(const std::int64_t* entries) noexcept {
    // So many numbers below this add up to at most 2^62.
    constexpr std::uint64_t too_large = (std::uint64_t{1} << 62) / Count;
    std::uint64_t sum = 0;
    std::uint64_t bits = 0;
    for (std::int64_t i = 0; i < Count; ++i) {
        const auto entry = static_cast<std::uint64_t>(entries[i]);
        sum += entry;
        bits |= entry;
    }
    return bits < too_large ? static_cast<std::int64_t>(sum) : -1;
}

// A cursor in the form that a scan computes in. The ring's head is passed in, since both channels
// push in step and share it. newest is always the entry pushed last.
struct Scan {
    const std::int64_t* const entries;
    const std::int64_t* const sums;  // of the ring's stretches
    const std::int64_t size;
    const std::int64_t span;
    std::int64_t index;      // of the entry at the cursor's offset
    std::int64_t remaining;  // span less the cursor's sum

    VESK_INLINE Scan(const CircularBuffer<std::int64_t>& ring, const std::int64_t* stretch_sums,
                     std::int64_t head, const Cursor& cursor, float samples) noexcept
        : entries(ring.storage.get()),
          sums(stretch_sums),
          size(static_cast<std::int64_t>(ring.size)),
          span(static_cast<std::int64_t>(limited_span(samples * fixed_point_one))),
          index(head + static_cast<std::int64_t>(cursor.offset)),
          remaining(span - cursor.sum) {
        if (index >= size) index -= size;
    }

    VESK_INLINE std::int64_t newer(std::int64_t i) const noexcept {
        return (i == 0 ? size : i) - 1;
    }
    VESK_INLINE std::int64_t older(std::int64_t i) const noexcept {
        return i + 1 == size ? 0 : i + 1;
    }
    // Offset = index - head + wrap.
    VESK_INLINE std::int64_t wrap(std::int64_t head) const noexcept {
        return index < head ? size : 0;
    }
    VESK_INLINE std::int64_t offset(std::int64_t head) const noexcept {
        return index - head + wrap(head);
    }
    VESK_INLINE Cursor cursor(std::int64_t head) const noexcept {
        return {static_cast<std::uint64_t>(offset(head)), span - remaining};
    }
    VESK_INLINE std::int64_t remainder(std::int64_t newest) const noexcept {
        return remaining + (newest >> 1);
    }
    // True at the entry the scan looks for: the remainder is neither negative, which the unsigned
    // comparison excludes, nor as large as the entry.
    VESK_INLINE bool settled(std::int64_t newest) const noexcept {
        return static_cast<std::uint64_t>(remainder(newest)) <
               static_cast<std::uint64_t>(entries[index]);
    }
    // A history too short for the span ends the search at its oldest entry. The remainder then
    // exceeds the entry and the division extrapolates: right at once after a reset.
    VESK_INLINE void record(std::int64_t newest, std::int64_t offset_now, std::size_t frame,
                            ReadPositions& out) const noexcept {
        out.remainder[frame] = static_cast<float>(remainder(newest));
        out.entry[frame] = static_cast<float>(entries[index]);
        out.offset[frame] = static_cast<std::int32_t>(offset_now);
    }

    // How many steps are sure to stay within the filled history and clear of the ring's start.
    VESK_INLINE std::int64_t free_steps(std::int64_t head, std::int64_t filled) const noexcept {
        const std::int64_t within = min(offset(head) - 1, filled - 1 - offset(head));
        return max(min(within, min(head, index / 2)), std::int64_t{0});
    }
    // After a push: the cursor's entry stays the same or becomes the one or two newer. Which one
    // is unpredictable, so all three are computed and none is branched to.
    VESK_INLINE void step(std::int64_t newest) noexcept {
        const std::int64_t half = newest >> 1;
        // The remainders with the same entry, one newer and two newer; the first that is not
        // negative counts. A mask is all ones where the remainder before it is negative.
        const std::int64_t same = remaining - (newest - half);
        const std::int64_t beyond_same = same >> 63;
        const std::int64_t one_newer = same + (entries[index - 1] & beyond_same);
        const std::int64_t beyond_one = one_newer >> 63;
        const std::int64_t two_newer = one_newer + (entries[index - 2] & beyond_one);
        remaining = two_newer - half;
        index += beyond_same + beyond_one;
    }
    // After a push: keeps the offset, so the cursor's entry becomes the one newer.
    VESK_INLINE void keep_offset(std::int64_t newest) noexcept {
        index = newer(index);
        remaining -= newest - entries[index];
    }
    // Moves until settled or at either end of the history. A new delay may be seconds away, so
    // whole stretches and strides are skipped where they can be. No entry is negative, so a
    // comparison that holds at the end of one holds at each entry within it.
    VESK_INLINE void search(std::int64_t newest, std::int64_t head, std::int64_t filled) noexcept {
        std::int64_t at = offset(head);
        const auto skip_newer = [&](std::int64_t length, auto sum) VESK_LAMBDA {
            if (index % length != 0 || at <= length || index < length) return false;
            const std::int64_t skipped = sum(index - length);
            if (skipped < 0 || remainder(newest) + skipped >= 0) return false;
            remaining += skipped;
            index -= length;
            at -= length;
            return true;
        };
        const auto skip_older = [&](std::int64_t length, auto sum) VESK_LAMBDA {
            if (index % length != 0 || at + length >= filled || index + length >= size)
                return false;
            const std::int64_t skipped = sum(index);
            if (skipped < 0 || remainder(newest) < skipped) return false;
            remaining -= skipped;
            index += length;
            at += length;
            return true;
        };
        const auto of_stretch = [&](std::int64_t from) VESK_LAMBDA { return sums[from / stretch]; };
        const auto of_stride = [&](std::int64_t from)
                                   VESK_LAMBDA { return sum_of<stride>(entries + from); };
        while (remainder(newest) < 0 && at > 1) {
            if (skip_newer(stretch, of_stretch) || skip_newer(stride, of_stride)) continue;
            index = newer(index);
            remaining += entries[index];
            --at;
        }
        while (remainder(newest) >= entries[index] && at < filled - 1) {
            if (skip_older(stretch, of_stretch) || skip_older(stride, of_stride)) continue;
            remaining -= entries[index];
            index = older(index);
            ++at;
        }
    }
};

}  // namespace orvane::blocks::vesk
