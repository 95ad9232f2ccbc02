// Two delay lines and the heads that read them: repitching like tape, or crossfading.
//
// A head does not stand a fixed number of samples behind the write. Beside the audio it keeps one
// fixed-point entry per sample, how much of the way between write and read that sample's stretch of
// line accounts for, and reads where the newest entries add up to a fixed span. The stretch between
// write and read thus behaves like tape: what was recorded at one speed stays spaced at that speed.
//
//   repitch    one head; span 1, entry = speed / delay. The delay glides through a one-pole.
//   crossfade  two heads; span = delay, entry = speed. A new delay takes effect by a 25 ms fade.
#pragma once

#include <array>
#include <cstdint>

#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

constexpr float line_seconds = 8.0f;  // of a delay line
constexpr float crossfade_seconds = 0.025f;
constexpr float fixed_point_one = 4294967296.0f;  // 32 fractional bits
constexpr std::uint64_t zeros_of_empty_line = 4;  // the four points of the shortest read

// Limits that keep every sum of entries within signed 64 bits, however wild the speed; the largest
// float below 2^62 for an entry, 2^61 for a span. They act from 30 octaves on.
constexpr float largest_entry = 4611685743549480960.0f;
constexpr float largest_span = 2305843009213693952.0f;

// A read position on a ring of entries.
struct Cursor {
    std::uint64_t offset = 0;
    std::int64_t sum = 0;  // fixed point, of the entries at(0) to at(offset - 1)
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
    VESK_INLINE void push(std::int64_t entry_left, std::int64_t entry_right) noexcept {
        filled = smaller(filled + 1, capacity);
        rate_left.push(entry_left);
        rate_right.push(entry_right);
    }
};

struct DelaySection {
    float sample_rate;                  // Hz
    Pair delay_time = both(0.5f);       // s; left, right
    CircularBuffer<float> delay_left;   // mid in mid/side mode
    CircularBuffer<float> delay_right;  // side in mid/side mode
    std::uint64_t delay_capacity;       // the lines' size
    std::uint64_t delay_filled = 0;     // samples that may be read, at most delay_capacity

    bool repitch = true;
    ReadHead tape_head;
    Pair smoothed_delay{};              // samples, repitch
    float delay_smoothing_time = 0.4f;  // s
    Pair delay_smoothing_coefficient;

    std::array<Pair, 2> head_delay{};  // samples, crossfade; [head][side]
    std::array<ReadHead, 2> crossfade_heads;
    float crossfade_position = 0.0f;        // weight of head 1, 0 to 1
    float crossfade_target = 0.0f;          // 0 or 1
    float crossfade_step = 0.0f;            // per sample
    std::uint64_t crossfade_remaining = 0;  // samples left of the running fade
    std::uint64_t crossfade_length = 0;     // samples of the latest fade
    std::uint64_t active_head = 0;          // the one with the newest delay

    explicit DelaySection(float rate);  // throws std::bad_alloc

    // Both lines silent in constant time: nothing older than delay_filled is ever read.
    void clear_delay_lines() noexcept;
    // All heads on delay_time at once.
    void reset_read_heads() noexcept;
    void set_repitch(bool value) noexcept;

    // speed in octaves. One call a sample, before write_delay.
    VESK_INLINE Pair read_delay(Pair speed) noexcept;
    VESK_INLINE void write_delay(Pair value) noexcept;

    // delay_time in samples, 1 at least.
    VESK_INLINE Pair wanted_delay() const noexcept;

private:
    VESK_INLINE Pair read_tape(Pair rate) noexcept;
    VESK_INLINE Pair read_crossfade(Pair rate) noexcept;
    VESK_INLINE void begin_crossfade() noexcept;
};

// What locate hands to the division that ends it: lanes of several heads are divided at once.
struct Location {
    float rest;    // of the span behind the cursor, fixed point
    float entry;   // the entry the span ends in, fixed point
    float offset;  // the cursor's
};

VESK_INLINE std::int64_t fixed_point(float x, float limit) noexcept {
    return static_cast<std::int64_t>(smaller(x, limit));  // not a number counts as the limit
}

// Moves the cursor to where the entries add up to the span and half of the newest entry, which is
// the middle of the newest sample's stretch. Called just after a push; filled counts it already.
VESK_INLINE Location locate(std::uint64_t filled, const CircularBuffer<std::int64_t>& ring,
                            Cursor& cursor, float span) noexcept {
    const std::int64_t newest = ring.storage[ring.head];
    std::uint64_t offset = cursor.offset;
    // The push moved everything one place back.
    std::int64_t entry = ring.at(offset);
    std::int64_t sum = cursor.sum - entry + newest;
    const std::int64_t target = fixed_point(span * fixed_point_one, largest_span) + newest / 2;
    while (offset > 1 && sum > target) {
        --offset;
        entry = ring.at(offset);
        sum -= entry;
    }
    const std::uint64_t last = filled - 1;
    while (offset < last && sum + entry <= target) {
        sum += entry;
        ++offset;
        entry = ring.at(offset);
    }
    cursor = {offset, sum};
    // A history too short for the span ends the scan early, and the division that follows
    // extrapolates with the oldest known entry: right at once after a reset.
    return {static_cast<float>(target - sum), static_cast<float>(entry),
            static_cast<float>(static_cast<std::int64_t>(offset))};
}

// Line offsets in samples from what locate found, between 1 and what has been written.
template <class T>
VESK_INLINE T line_position(T rest, T entry, T offset, float limit) noexcept {
    const T p = (rest / entry + (offset - 0.5f)) - 1.0f;
    const T top = all<T>(limit);
    return p > top ? top : larger(p, all<T>(1.0f));  // what is not a number reads at 1
}

// The four points around a position on a line, position - 1 first.
VESK_INLINE Quad points_at(const CircularBuffer<float>& line, std::int32_t i) noexcept {
    const std::uint64_t first = line.index(static_cast<std::uint64_t>(i) - 1);
    const float* const storage = line.storage.get();
    Quad points;
    if (first + 4 <= line.size) [[likely]] {
        __builtin_memcpy(&points, storage + first, sizeof points);
    } else {
        for (std::uint64_t k = 0; k < 4; ++k)
            points[k] = storage[first + k >= line.size ? first + k - line.size : first + k];
    }
    return points;
}

VESK_INLINE Pair DelaySection::wanted_delay() const noexcept {
    const Pair wanted = delay_time * sample_rate;
    return wanted < 1.0f ? both(1.0f) : wanted;
}

VESK_INLINE Pair DelaySection::read_delay(Pair speed) noexcept {
    const Pair rate = fast_exp2(speed);
    return repitch ? read_tape(rate) : read_crossfade(rate);
}

VESK_INLINE Pair DelaySection::read_tape(Pair rate) noexcept {
    const Pair wanted = wanted_delay();
    const Pair k = delay_smoothing_coefficient;
    const Pair next = (1.0f - k) * smoothed_delay + wanted * k;
    // Where rounding has stopped the smoother short of its goal it snaps onto it.
    smoothed_delay = next == smoothed_delay ? wanted : next;

    const Pair entries = (rate / smoothed_delay) * fixed_point_one;
    tape_head.push(fixed_point(entries[0], largest_entry), fixed_point(entries[1], largest_entry));
    const Location l = locate(tape_head.filled, tape_head.rate_left, tape_head.cursor_left, 1.0f);
    const Location r = locate(tape_head.filled, tape_head.rate_right, tape_head.cursor_right, 1.0f);
    const float limit = static_cast<float>(static_cast<std::int64_t>(delay_filled - 3));
    const Pair position = line_position(Pair{l.rest, r.rest}, Pair{l.entry, r.entry},
                                        Pair{l.offset, r.offset}, limit);
    const IntPair i = whole(position);
    const Pair t = position - floats(i);
    const Quad left = points_at(delay_left, i[0]);
    const Quad right = points_at(delay_right, i[1]);
    return hermite_interpolate(Pair{left[0], right[0]}, Pair{left[1], right[1]},
                               Pair{left[2], right[2]}, Pair{left[3], right[3]}, t);
}

VESK_INLINE void DelaySection::begin_crossfade() noexcept {
    const std::uint64_t next_head = (active_head - 1) & 1;
    crossfade_target = next_head == 0 ? 0.0f : 1.0f;
    crossfade_length = static_cast<std::uint64_t>(sample_rate * crossfade_seconds);
    if (crossfade_length > 1 && crossfade_target != crossfade_position) {
        crossfade_remaining = crossfade_length - 1;
        crossfade_step =
            (crossfade_target - crossfade_position) / static_cast<float>(crossfade_remaining);
    } else {
        crossfade_position = crossfade_target;
    }
    // The only moment at which this mode looks at delay_time.
    head_delay[next_head] = wanted_delay();
    // The scan then walks from the old delay to the new one in this very sample.
    crossfade_heads[next_head].cursor_left = crossfade_heads[active_head].cursor_left;
    crossfade_heads[next_head].cursor_right = crossfade_heads[active_head].cursor_right;
    active_head = next_head;
}

VESK_INLINE Pair DelaySection::read_crossfade(Pair rate) noexcept {
    if (crossfade_remaining == 0) [[unlikely]]
        begin_crossfade();

    const Pair entries = rate * fixed_point_one;
    const std::int64_t entry_left = fixed_point(entries[0], largest_entry);
    const std::int64_t entry_right = fixed_point(entries[1], largest_entry);
    ReadHead& h0 = crossfade_heads[0];
    ReadHead& h1 = crossfade_heads[1];
    h1.push(entry_left, entry_right);
    h0.push(entry_left, entry_right);
    const Location l0 = locate(h0.filled, h0.rate_left, h0.cursor_left, head_delay[0][0]);
    const Location r0 = locate(h0.filled, h0.rate_right, h0.cursor_right, head_delay[0][1]);
    const Location l1 = locate(h1.filled, h1.rate_left, h1.cursor_left, head_delay[1][0]);
    const Location r1 = locate(h1.filled, h1.rate_right, h1.cursor_right, head_delay[1][1]);
    const float limit = static_cast<float>(static_cast<std::int64_t>(delay_filled - 3));
    const Quad position = line_position(Quad{l0.rest, r0.rest, l1.rest, r1.rest},
                                        Quad{l0.entry, r0.entry, l1.entry, r1.entry},
                                        Quad{l0.offset, r0.offset, l1.offset, r1.offset}, limit);

    const float x = crossfade_position;
    if (crossfade_remaining != 0) {
        // Computed back from the target, so that a fade ends on it exactly; serves the next sample.
        --crossfade_remaining;
        crossfade_position =
            crossfade_target -
            static_cast<float>(static_cast<std::int64_t>(crossfade_remaining)) * crossfade_step;
    }

    const IntQuad i = whole(position);
    const Quad t = position - floats(i);
    const Quad p0 = points_at(delay_left, i[0]);
    const Quad p1 = points_at(delay_right, i[1]);
    const Quad p2 = points_at(delay_left, i[2]);
    const Quad p3 = points_at(delay_right, i[3]);
    const Quad read =
        hermite_interpolate(Quad{p0[0], p1[0], p2[0], p3[0]}, Quad{p0[1], p1[1], p2[1], p3[1]},
                            Quad{p0[2], p1[2], p2[2], p3[2]}, Quad{p0[3], p1[3], p2[3], p3[3]}, t);
    return high_half(read) * x + (1.0f - x) * low_half(read);
}

VESK_INLINE void DelaySection::write_delay(Pair value) noexcept {
    delay_left.push(value[0]);
    delay_right.push(value[1]);
    delay_filled = smaller(delay_filled + 1, delay_capacity);
}

}  // namespace orvane::blocks::vesk
