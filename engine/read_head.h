// A read head: where on the delay line a channel reads.
//
// A head does not stand a fixed number of samples behind the write. Beside the audio it keeps one
// fixed-point entry per sample, how much of the way between write and read that sample's stretch of
// line accounts for, and reads where the newest entries add up to a fixed span. The stretch between
// write and read thus behaves like tape: what was recorded at one speed stays spaced at that speed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

constexpr float fixed_point_one = 4294967296.0f;  // 32 fractional bits

// Limits that keep every sum of entries within signed 64 bits, however wild the speed; the largest
// float below 2^62 for an entry, 2^61 for a span. They act from 30 octaves on.
constexpr float largest_entry = 4611685743549480960.0f;
constexpr float largest_span = 2305843009213693952.0f;

// What is not a number counts as the limit.
template <class T>
VESK_INLINE T limited_entry(T x) noexcept {
    return min(x, broadcast<T>(largest_entry));
}
VESK_INLINE float limited_span(float x) noexcept {
    return min(x, largest_span);
}

// A read position on a ring of entries.
struct Cursor {
    std::uint64_t offset = 0;
    std::int64_t sum = 0;  // fixed point, of the entries at(0) to at(offset - 1)

    VESK_INLINE bool operator==(const Cursor& other) const noexcept {
        return offset == other.offset && sum == other.sum;
    }
};

// The entries that a run pushes.
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

// What one channel's cursor finds, frame by frame.
struct ReadPositions {
    float rest[max_block];           // of the span behind the cursor, fixed point
    float entry[max_block];          // the entry the span ends in, fixed point
    std::int32_t offset[max_block];  // the cursor's

    VESK_INLINE void copy(const ReadPositions& other, std::size_t first, std::size_t end) noexcept {
        for (std::size_t i = first; i < end; ++i) {
            rest[i] = other.rest[i];
            entry[i] = other.entry[i];
            offset[i] = other.offset[i];
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

    explicit ReadHead(std::uint64_t entries);
    void seed(std::int64_t entry_left, std::int64_t entry_right) noexcept;
    void push(std::int64_t entry_left, std::int64_t entry_right) noexcept;

    // Frames first to end - 1 of a run, with the spans of both channels in samples.
    VESK_INLINE void locate(const Entries& pushed, Pair spans, std::size_t first, std::size_t end,
                            ReadPositions& left, ReadPositions& right) noexcept;
    // The same frames, when this head stands where the other did and has the same span.
    VESK_INLINE void follow(const ReadHead& other, const Entries& pushed, std::size_t first,
                            std::size_t end) noexcept;
};

// One channel's cursor on its way through a run: each frame pushes an entry and moves the cursor to
// where the entries add up to the span and half of the newest entry, which is the middle of the
// newest sample's stretch. Entries are never negative. The ring's head is the caller's: both
// channels push in step.
struct Scan {
    std::int64_t* const entries;
    const std::int64_t size;
    const std::int64_t span;
    std::int64_t place;      // of the entry at the cursor's offset
    std::int64_t remaining;  // of the span, behind the entries before that one

    VESK_INLINE Scan(const CircularBuffer<std::int64_t>& ring, const Cursor& cursor,
                     float samples) noexcept
        : entries(ring.storage.get()),
          size(static_cast<std::int64_t>(ring.size)),
          span(static_cast<std::int64_t>(limited_span(samples * fixed_point_one))),
          place(static_cast<std::int64_t>(ring.index(cursor.offset))),
          remaining(span - cursor.sum) {}

    VESK_INLINE std::int64_t newer(std::int64_t at) const noexcept {
        return (at == 0 ? size : at) - 1;
    }
    VESK_INLINE std::int64_t older(std::int64_t at) const noexcept {
        return at + 1 == size ? 0 : at + 1;
    }
    // What place - head lacks of the offset.
    VESK_INLINE std::int64_t wrap(std::int64_t head) const noexcept {
        return place < head ? size : 0;
    }
    VESK_INLINE std::int64_t offset(std::int64_t head) const noexcept {
        return place - head + wrap(head);
    }
    VESK_INLINE Cursor cursor(std::int64_t head) const noexcept {
        return {static_cast<std::uint64_t>(offset(head)), span - remaining};
    }
    // What is left with half of the newest entry: a part of the entry at the cursor.
    VESK_INLINE std::int64_t rest(std::int64_t newest) const noexcept {
        return remaining + (newest >> 1);
    }
    VESK_INLINE bool settled(std::int64_t newest) const noexcept {
        return static_cast<std::uint64_t>(rest(newest)) <
               static_cast<std::uint64_t>(entries[place]);  // and not negative
    }
    // A history too short for the span ends the scan early, and the division that follows
    // extrapolates with the oldest known entry: right at once after a reset.
    VESK_INLINE void note(std::int64_t newest, std::int64_t at, std::size_t frame,
                          ReadPositions& out) const noexcept {
        out.rest[frame] = static_cast<float>(rest(newest));
        out.entry[frame] = static_cast<float>(entries[place]);
        out.offset[frame] = static_cast<std::int32_t>(at);
    }

    // How many steps stay within the history and clear of the ring's start.
    VESK_INLINE std::int64_t free_steps(std::int64_t head, std::int64_t filled) const noexcept {
        const std::int64_t inside = min(offset(head) - 1, filled - 1 - offset(head));
        return max(min(inside, min(head, place / 2)), std::int64_t{0});
    }
    // Moves with a push by one entry or not at all. That is nearly always right and nobody can
    // predict which, so that it is done without a branch.
    VESK_INLINE void step(std::int64_t newest) noexcept {
        const std::int64_t half = newest >> 1;
        // What would be left one entry on; there itself; one entry back. The first that is not
        // negative counts.
        const std::int64_t on = remaining - (newest - half);
        const std::int64_t not_on = on >> 63;
        const std::int64_t there = on + (entries[place - 1] & not_on);
        const std::int64_t not_there = there >> 63;
        const std::int64_t back = there + (entries[place - 2] & not_there);
        remaining = back - half;
        place += not_on + not_there;
    }
    // Stays with a push.
    VESK_INLINE void stay(std::int64_t newest) noexcept {
        place = newer(place);  // the push moved everything one place back
        remaining -= newest - entries[place];
    }
    // Moves as far as it takes and the history goes.
    VESK_INLINE void walk(std::int64_t newest, std::int64_t head, std::int64_t filled) noexcept {
        std::int64_t at = offset(head);
        // A new delay may lie seconds away: by strides first. What holds behind a stride of
        // entries, none of them negative, holds at each of them.
        for (; at > stride && place >= stride; at -= stride) {
            const std::int64_t passed = sum_of_stride(place - stride);
            if (passed < 0 || rest(newest) + passed >= 0) break;
            remaining += passed;
            place -= stride;
        }
        for (; rest(newest) < 0 && at > 1; --at) {
            place = newer(place);
            remaining += entries[place];
        }
        for (; at + stride < filled && place + stride < size; at += stride) {
            const std::int64_t passed = sum_of_stride(place);
            if (passed < 0 || rest(newest) < passed) break;
            remaining -= passed;
            place += stride;
        }
        for (; rest(newest) >= entries[place] && at < filled - 1; ++at) {
            remaining -= entries[place];
            place = older(place);
        }
    }

private:
    static constexpr std::int64_t stride = 8;

    // Negative when it might not fit.
    VESK_INLINE std::int64_t sum_of_stride(std::int64_t from) const noexcept {
        constexpr int bits_of_eighth = 59;
        std::uint64_t sum = 0;
        std::uint64_t bits = 0;
        for (std::int64_t i = 0; i < stride; ++i) {
            const auto entry = static_cast<std::uint64_t>(entries[from + i]);
            sum += entry;
            bits |= entry;
        }
        return bits >> bits_of_eighth == 0 ? static_cast<std::int64_t>(sum) : -1;
    }
};

VESK_INLINE void ReadHead::locate(const Entries& pushed, Pair spans, std::size_t first,
                                  std::size_t end, ReadPositions& left,
                                  ReadPositions& right) noexcept {
    Scan l(rate_left, cursor_left, spans[0]);
    Scan r(rate_right, cursor_right, spans[1]);
    const auto size = static_cast<std::int64_t>(capacity);
    auto head = static_cast<std::int64_t>(rate_left.head);
    auto valid = static_cast<std::int64_t>(filled);
    const auto push = [&](std::size_t frame) VESK_LAMBDA {
        l.entries[head] = pushed.left[frame];
        r.entries[head] = pushed.right[frame];
    };
    for (std::size_t frame = first; frame < end; ++frame) {
        const std::size_t begin = frame;
        const auto free =
            static_cast<std::size_t>(min(l.free_steps(head, valid), r.free_steps(head, valid)));
        const std::size_t stop = min(end, frame + free);
        const std::int64_t wrap_left = l.wrap(head);
        const std::int64_t wrap_right = r.wrap(head);
        for (; frame < stop; ++frame) {
            --head;
            push(frame);
            l.step(pushed.left[frame]);
            r.step(pushed.right[frame]);
            if (!l.settled(pushed.left[frame]) || !r.settled(pushed.right[frame])) [[unlikely]]
                break;
            l.note(pushed.left[frame], l.place - head + wrap_left, frame, left);
            r.note(pushed.right[frame], r.place - head + wrap_right, frame, right);
        }
        valid = min(valid + static_cast<std::int64_t>(frame - begin), size);
        if (frame == end) break;

        // A frame that needs more.
        valid = min(valid + 1, size);
        if (frame == stop) {
            head = l.newer(head);
            push(frame);
            l.stay(pushed.left[frame]);
            r.stay(pushed.right[frame]);
        }
        l.walk(pushed.left[frame], head, valid);
        r.walk(pushed.right[frame], head, valid);
        l.note(pushed.left[frame], l.offset(head), frame, left);
        r.note(pushed.right[frame], r.offset(head), frame, right);
    }
    cursor_left = l.cursor(head);
    cursor_right = r.cursor(head);
    rate_left.head = rate_right.head = static_cast<std::uint64_t>(head);
    filled = static_cast<std::uint64_t>(valid);
}

VESK_INLINE void ReadHead::follow(const ReadHead& other, const Entries& pushed, std::size_t first,
                                  std::size_t end) noexcept {
    rate_left.push(pushed.left + first, end - first);
    rate_right.push(pushed.right + first, end - first);
    cursor_left = other.cursor_left;
    cursor_right = other.cursor_right;
    filled = other.filled;
}

}  // namespace orvane::blocks::vesk
