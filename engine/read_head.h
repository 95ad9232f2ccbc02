// A read head: finds where on the delay line each channel reads.
//
// Its read position is no fixed distance from the write position. In step with the audio it keeps
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

struct ReadHead {
    CircularBuffer<std::int64_t> rate_left;  // entries, fixed point with 32 fractional bits
    CircularBuffer<std::int64_t> rate_right;
    Cursor cursor_left;
    Cursor cursor_right;
    std::uint64_t capacity = 0;  // size of both rings
    std::uint64_t filled = 0;    // entries that are valid, at most capacity

    explicit ReadHead(std::uint64_t size);
    void seed(std::int64_t entry_left, std::int64_t entry_right) noexcept;
    void push(std::int64_t entry_left, std::int64_t entry_right) noexcept;

    // For frames first to end - 1 of a block: pushes each frame's entries and moves both cursors.
    // spans are those of the two channels, in samples.
    VESK_INLINE void locate(const Entries& entries, Pair spans, std::size_t first, std::size_t end,
                            ReadPositions& left, ReadPositions& right) noexcept;
    // The same frames after source has located them, when both heads had equal cursors and spans.
    VESK_INLINE void mirror(const ReadHead& source, const Entries& entries, std::size_t first,
                            std::size_t end) noexcept;
};

VESK_INLINE void ReadHead::locate(const Entries& entries, Pair spans, std::size_t first,
                                  std::size_t end, ReadPositions& left,
                                  ReadPositions& right) noexcept {
    Scan l(rate_left, cursor_left, spans[0]);
    Scan r(rate_right, cursor_right, spans[1]);
    const auto size = static_cast<std::int64_t>(capacity);
    auto head = static_cast<std::int64_t>(rate_left.head);
    auto valid = static_cast<std::int64_t>(filled);
    // Entries are never read past the ring's end, so its repeated elements are not kept up to date.
    const auto write_entries = [&](std::size_t frame) VESK_LAMBDA {
        l.entries[head] = entries.left[frame];
        r.entries[head] = entries.right[frame];
    };
    for (std::size_t frame = first; frame < end; ++frame) {
        // Frames for which a step each is enough, as nearly all are.
        const std::size_t begin = frame;
        const auto free =
            static_cast<std::size_t>(min(l.free_steps(head, valid), r.free_steps(head, valid)));
        const std::size_t stop = min(end, frame + free);
        const std::int64_t wrap_left = l.wrap(head);
        const std::int64_t wrap_right = r.wrap(head);
        for (; frame < stop; ++frame) {
            --head;
            write_entries(frame);
            l.step(entries.left[frame]);
            r.step(entries.right[frame]);
            if (!l.settled(entries.left[frame]) || !r.settled(entries.right[frame])) [[unlikely]]
                break;
            l.record(entries.left[frame], l.index - head + wrap_left, frame, left);
            r.record(entries.right[frame], r.index - head + wrap_right, frame, right);
        }
        valid = min(valid + static_cast<std::int64_t>(frame - begin), size);
        if (frame == end) break;

        // A frame that needs a search, or whose step could have left the history. In the first
        // case its entries are pushed already.
        valid = min(valid + 1, size);
        if (frame == stop) {
            head = l.newer(head);
            write_entries(frame);
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
    rate_left.head = rate_right.head = static_cast<std::uint64_t>(head);
    filled = static_cast<std::uint64_t>(valid);
}

VESK_INLINE void ReadHead::mirror(const ReadHead& source, const Entries& entries, std::size_t first,
                                  std::size_t end) noexcept {
    rate_left.push(entries.left + first, end - first);
    rate_right.push(entries.right + first, end - first);
    cursor_left = source.cursor_left;
    cursor_right = source.cursor_right;
    filled = source.filled;
}

}  // namespace orvane::blocks::vesk
