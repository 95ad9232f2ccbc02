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
#include <vector>

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/lanes.h"
#include "engine/read_scan.h"

namespace orvane::blocks::vesk {

// The entries that a block pushes, in fixed point. Made from floats within the entry limit.
struct Entries {
    std::int64_t left[max_block];
    std::int64_t right[max_block];

    VESK_INLINE Entries(const Block& limited, std::size_t n) noexcept {
        for (std::size_t i = 0; i < n; ++i) {
            left[i] = static_cast<std::int64_t>(limited[i][0]);
            right[i] = static_cast<std::int64_t>(limited[i][1]);
        }
    }
};

// The latest entries of both channels. All heads read the same rings: the two heads of crossfade
// mode see equal entries, and of the two modes only one is in use at a time.
//
// A search may pass hundreds of thousands of entries. So the sums of whole stretches of a ring are
// kept, each written when the ring's head has passed the stretch.
//
// A block's entries are pushed before its frames are located. So that they overwrite nothing that
// the first of these frames may still read, the rings are a block longer than the history.
struct EntryRings {
    CircularBuffer<std::int64_t> rate_left;  // fixed point with 32 fractional bits
    CircularBuffer<std::int64_t> rate_right;
    std::uint64_t capacity = 0;  // of the history: entries that may be read
    std::uint64_t filled = 0;    // entries that are valid, at most capacity

    std::vector<std::int64_t> sums_left;  // of each stretch of a ring; negative: too large
    std::vector<std::int64_t> sums_right;

    explicit EntryRings(std::uint64_t history);
    void seed(std::int64_t entry_left, std::int64_t entry_right) noexcept;
    VESK_INLINE void push(const Entries& entries, std::size_t n) noexcept {
        const std::uint64_t old_head = rate_left.head;
        rate_left.push(entries.left, n);
        rate_right.push(entries.right, n);
        sum_passed_stretches(old_head);
    }

private:
    // After pushes of fewer entries than a stretch has: at most one has been completed on either
    // side of the rings' seam.
    VESK_INLINE void sum_passed_stretches(std::uint64_t old_head) noexcept {
        const std::uint64_t head = rate_left.head;
        const bool wrapped = head > old_head;
        if (old_head != 0) sum_if_passed((old_head - 1) / stretch, wrapped ? 0 : head);
        if (wrapped) sum_if_passed((rate_left.size - 1) / stretch, head);
    }
    VESK_INLINE void sum_if_passed(std::uint64_t i, std::uint64_t head) noexcept {
        if (i * stretch < head || i >= sums_left.size()) [[likely]]
            return;
        sums_left[i] = sum_of<stretch>(rate_left.storage.get() + i * stretch);
        sums_right[i] = sum_of<stretch>(rate_right.storage.get() + i * stretch);
    }
};

// Where a block begins in the rings: their head and number of valid entries before its pushes.
struct RingPosition {
    std::int64_t head;
    std::int64_t filled;

    VESK_INLINE explicit RingPosition(const EntryRings& rings) noexcept
        : head(static_cast<std::int64_t>(rings.rate_left.head)),
          filled(static_cast<std::int64_t>(rings.filled)) {}
};

struct ReadHead {
    Cursor cursor_left;
    Cursor cursor_right;

    void seed(std::int64_t entry_left, std::int64_t entry_right) noexcept;

    // For frames first to end - 1 of a block whose entries are pushed already: moves both cursors.
    // position is that of frame first, and becomes that of frame end. spans are those of the two
    // channels, in samples.
    VESK_INLINE void locate(const EntryRings& rings, RingPosition& position, const Entries& entries,
                            Pair spans, std::size_t first, std::size_t end, ReadPositions& left,
                            ReadPositions& right) noexcept;
};

VESK_INLINE void ReadHead::locate(const EntryRings& rings, RingPosition& position,
                                  const Entries& entries, Pair spans, std::size_t first,
                                  std::size_t end, ReadPositions& left,
                                  ReadPositions& right) noexcept {
    const auto capacity = static_cast<std::int64_t>(rings.capacity);
    std::int64_t head = position.head;
    std::int64_t valid = position.filled;
    Scan l(rings.rate_left, rings.sums_left.data(), head, cursor_left, spans[0]);
    Scan r(rings.rate_right, rings.sums_right.data(), head, cursor_right, spans[1]);
    for (std::size_t frame = first; frame < end; ++frame) {
        // Frames for which a step each is enough, as nearly all are.
        const std::size_t begin = frame;
        const auto free =
            static_cast<std::size_t>(min(l.free_steps(head, valid), r.free_steps(head, valid)));
        const std::size_t stop = min(end, frame + free);
        const std::int64_t wrap_left = l.wrap(head);
        const std::int64_t wrap_right = r.wrap(head);
        for (; frame < stop; ++frame) {
            l.step(entries.left[frame]);
            r.step(entries.right[frame]);
            if (!l.settled(entries.left[frame]) || !r.settled(entries.right[frame])) [[unlikely]]
                break;
            l.record(entries.left[frame], l.index, frame, left);
            r.record(entries.right[frame], r.index, frame, right);
        }
        // What was recorded as their offsets are indices yet. The head has moved down by one for
        // each frame.
        left.add_to_offsets(wrap_left - head + 1, begin, frame);
        right.add_to_offsets(wrap_right - head + 1, begin, frame);
        head -= static_cast<std::int64_t>(frame - begin) + (frame < stop ? 1 : 0);
        valid = min(valid + static_cast<std::int64_t>(frame - begin), capacity);
        if (frame == end) break;

        // A frame that needs a search, or whose step could have left the history. In the first
        // case its step is done already.
        valid = min(valid + 1, capacity);
        if (frame == stop) {
            head = l.newer(head);
            l.keep_offset(entries.left[frame]);
            r.keep_offset(entries.right[frame]);
        }
        l.search(entries.left[frame], head, valid);
        r.search(entries.right[frame], head, valid);
        l.record(entries.left[frame], l.offset(head), frame, left);
        r.record(entries.right[frame], r.offset(head), frame, right);
    }
    cursor_left = l.cursor(head);
    cursor_right = r.cursor(head);
    position.head = head;
    position.filled = valid;
}

}  // namespace orvane::blocks::vesk
