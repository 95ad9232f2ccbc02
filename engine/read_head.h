// A read head: finds where on the delay line each channel reads.
//
// Its read position is no fixed distance from the write position. In step with the audio there is
// one fixed-point entry per sample: the share of the way from write to read that this sample's
// stretch of line accounts for. It reads where the newest entries add up to a fixed span. The
// stretch between write and read thus behaves like tape: what was recorded at one speed stays
// spaced at that speed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/lanes.h"
#include "engine/large_entries.h"
#include "engine/read_scan.h"

namespace orvane::blocks::vesk {

// The latest entries of both channels, as totals. All heads read the same rings: the two heads of
// crossfade mode see equal entries, and of the two modes only one is in use at a time.
//
// A block's entries are pushed before its frames are located. So that they overwrite nothing that
// the first of these frames may still read, the rings are a block longer than the history.
struct EntryRings {
    CircularBuffer<Total> left;
    CircularBuffer<Total> right;
    std::uint64_t capacity;    // of the history: entries that may be read
    std::uint64_t filled = 0;  // entries that are valid, at most capacity
    LargeEntries large;

    explicit EntryRings(std::uint64_t history);  // throws std::bad_alloc
    void seed(std::int64_t entry_left, std::int64_t entry_right) noexcept;
    // Entries in fixed point, from 0 up to the limit of entries.
    VESK_INLINE void push(const Block& entries, std::size_t n) noexcept;

private:
    VESK_INLINE static float largest_of(const Block& entries, std::size_t n) noexcept;
};

// Where a block begins in the rings: their head and number of valid entries before its pushes.
struct RingPosition {
    std::int64_t head;
    std::int64_t filled;

    VESK_INLINE explicit RingPosition(const EntryRings& rings) noexcept
        : head(static_cast<std::int64_t>(rings.left.head)),
          filled(static_cast<std::int64_t>(rings.filled)) {}
};

struct ReadHead {
    std::int64_t offset_left = 1;  // of the cursors
    std::int64_t offset_right = 1;

    // For frames first to end - 1 of a block whose entries are pushed already: moves both cursors.
    // position is that of frame first, and becomes that of frame end. spans are those of the two
    // channels, in samples.
    VESK_INLINE void locate(const EntryRings& rings, RingPosition& position, Pair spans,
                            std::size_t first, std::size_t end, ReadPositions& left,
                            ReadPositions& right) noexcept;
};

VESK_INLINE float EntryRings::largest_of(const Block& entries, std::size_t n) noexcept {
    Oct of_lanes{};
    float largest = 0.0f;
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T x = entries.at<T>(i);
        if constexpr (std::is_same_v<T, Oct>)
            of_lanes = max(x, of_lanes);
        else
            largest = max(max(x[0], x[1]), largest);
    });
    for (std::size_t i = 0; i < lane_count<Oct>; ++i) largest = max(of_lanes[i], largest);
    return largest;
}

VESK_INLINE void EntryRings::push(const Block& entries, std::size_t n) noexcept {
    // Both channels in one loop, so that their latencies overlap.
    Total* const to_left = left.write_pointer(n);
    Total* const to_right = right.write_pointer(n);
    Total total_left = left.at(0);
    Total total_right = right.at(0);
    for (std::size_t i = 0; i < n; ++i) {
        total_left += static_cast<Total>(static_cast<std::int64_t>(entries[i][0]));
        total_right += static_cast<Total>(static_cast<std::int64_t>(entries[i][1]));
        to_left[n - 1 - i] = total_left;
        to_right[n - 1 - i] = total_right;
    }
    left.advance(n);
    right.advance(n);
    large.push(largest_of(entries, n), left.head, n);
}

VESK_INLINE void ReadHead::locate(const EntryRings& rings, RingPosition& position, Pair spans,
                                  std::size_t first, std::size_t end, ReadPositions& left,
                                  ReadPositions& right) noexcept {
    const auto capacity = static_cast<std::int64_t>(rings.capacity);
    const auto size = static_cast<std::int64_t>(rings.left.size);
    std::int64_t head = position.head;
    std::int64_t filled = position.filled;
    Scan l(rings.left, offset_left, spans[0]);
    Scan r(rings.right, offset_right, spans[1]);
    int groups_to_miss = end - first >= 4 && rings.large.none() ? 2 : 0;
    for (std::size_t frame = first; frame < end;) {
        l.set_pointers(head);
        r.set_pointers(head);
        // Frames for which a step each is enough, as nearly all are.
        const std::int64_t free = min(l.free_steps(filled), r.free_steps(filled));
        const std::size_t stop = min(end, frame + static_cast<std::size_t>(free));
        const std::size_t begin = frame;
        // Four at a time while the offsets drift slowly, as they nearly always do.
        bool missed = false;
        if (groups_to_miss > 0) {
            for (; stop - frame >= 4; frame += 4) {
                const Scan::Four four_left = l.find_four();
                const Scan::Four four_right = r.find_four();
                missed = any_negative(four_left.outside | four_right.outside);
                if (missed) [[unlikely]]
                    break;
                l.accept(four_left, frame, left);
                r.accept(four_right, frame, right);
            }
        }
        bool settled = free > 0;
        const std::int64_t from_left = l.offset;
        const std::int64_t from_right = r.offset;
        for (const std::size_t to = missed ? frame + 4 : stop; frame < to && settled; ++frame) {
            const bool settled_left = l.step(frame, left);
            const bool settled_right = r.step(frame, right);
            settled = settled_left && settled_right;
        }
        if (missed) {
            l.drift = sign(l.offset - from_left);
            r.drift = sign(r.offset - from_right);
            --groups_to_miss;
        }
        if (free == 0) {
            if (head == 0) head = size;
            ++frame;
        }
        const auto pushed = static_cast<std::int64_t>(frame - begin);
        head -= pushed;
        filled = min(filled + pushed, capacity);
        if (settled) continue;
        l.search(head, filled, rings.large, frame - 1, left);
        r.search(head, filled, rings.large, frame - 1, right);
    }
    offset_left = l.offset;
    offset_right = r.offset;
    position.head = head;
    position.filled = filled;
}

}  // namespace orvane::blocks::vesk
