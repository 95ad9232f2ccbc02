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
#include <cstddef>
#include <cstdint>

#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/run.h"

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

    VESK_INLINE bool operator==(const Cursor& other) const noexcept {
        return offset == other.offset && sum == other.sum;
    }
};

VESK_INLINE std::int64_t fixed_point(float x, float limit) noexcept {
    return static_cast<std::int64_t>(smaller(x, limit));  // not a number counts as the limit
}

// The entries of one channel on their way through a run.
struct Entries {
    std::int64_t values[longest_run];

    VESK_INLINE Entries(const Run& products, int side, std::size_t n) noexcept {
        for (std::size_t i = 0; i < n; ++i)
            values[i] = fixed_point(products[i][side], largest_entry);
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
    // A run's entries, when this head stands where the other did and wants the same delay.
    VESK_INLINE void follow(const ReadHead& other, const Entries& left, const Entries& right,
                            std::size_t first, std::size_t end) noexcept;
};

// Where the frames of a run read, channel by channel.
struct ReadPlan {
    // One channel of one head. What its cursor finds, then the position that follows from it.
    struct Lane {
        float rest[longest_run];           // of the span behind the cursor, fixed point
        float entry[longest_run];          // the entry the span ends in, fixed point
        std::int32_t offset[longest_run];  // the cursor's
        std::int32_t index[longest_run];   // whole part of the position on the line
        float fraction[longest_run];       // the rest of it

        VESK_INLINE void resolve(const float* limits, std::size_t n) noexcept;
        VESK_INLINE void copy_finding(const Lane& other, std::size_t first,
                                      std::size_t end) noexcept;
    };

    Lane lanes[4];             // left and right of head 0, then of head 1
    float limit[longest_run];  // the oldest readable position
    // Of head 1. Four are read at once from any frame on.
    float weight[longest_run + lanes_of<Quad> - 1];
    bool one_position = true;  // both heads, or the only one, read as lanes 0 and 1 say

    // From findings to positions, for n frames.
    VESK_INLINE void resolve(std::size_t n) noexcept;

    // How many frames from first on read nothing that one of them writes; at least 1.
    VESK_INLINE std::size_t free_frames(std::size_t first, std::size_t n) const noexcept;

    VESK_INLINE int lanes_in_use() const noexcept { return one_position ? 2 : 4; }
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

    // Where a run of n frames reads: decided by the speeds, in octaves, and by no audio.
    VESK_INLINE ReadPlan plan_reads(const Run& speed, std::size_t n) noexcept;
    // What frames first to first + n - 1 of the plan read, while the line holds all before first.
    // None of them may read what another one is still to write: plan.free_frames(first) tells.
    VESK_INLINE Run read_delay(const ReadPlan& plan, std::size_t first,
                               std::size_t n) const noexcept;
    VESK_INLINE void write_delay(const Run& value, std::size_t n) noexcept;

    // One frame: read before write.
    VESK_INLINE Pair read_delay(Pair speed) noexcept {
        return read_delay(plan_reads(run_of_one(speed), 1), 0, 1)[0];
    }
    VESK_INLINE void write_delay(Pair value) noexcept { write_delay(run_of_one(value), 1); }

    // delay_time in samples, 1 at least.
    VESK_INLINE Pair wanted_delay() const noexcept;

private:
    VESK_INLINE void plan_tape(const Run& rate, std::size_t n, ReadPlan& plan) noexcept;
    VESK_INLINE void plan_crossfade(const Run& rate, std::size_t n, ReadPlan& plan) noexcept;
    VESK_INLINE void begin_crossfade() noexcept;
    // While the delay rests the heads alternate on one position: what one finds the other finds.
    VESK_INLINE bool heads_alike() const noexcept;
};

VESK_INLINE float signed_float(std::uint64_t x) noexcept {
    return static_cast<float>(static_cast<std::int64_t>(x));  // x is far below 2^63
}

// One channel's cursor on its way through a run: each frame pushes an entry and moves the cursor to
// where the entries add up to the span and half of the newest entry, which is the middle of the
// newest sample's stretch. Entries are never negative. Where the ring's head is the caller knows:
// both channels push in step.
struct Scan {
    std::int64_t* const entries;
    const std::int64_t size;
    const std::int64_t span;
    std::int64_t place;  // of the entry at the cursor's offset
    std::int64_t left;   // of the span, behind the entries before that one

    VESK_INLINE Scan(const CircularBuffer<std::int64_t>& ring, const Cursor& cursor,
                     float samples) noexcept
        : entries(ring.storage.get()),
          size(static_cast<std::int64_t>(ring.size)),
          span(fixed_point(samples * fixed_point_one, largest_span)),
          place(static_cast<std::int64_t>(ring.index(cursor.offset))),
          left(span - cursor.sum) {}
    VESK_INLINE std::int64_t newer(std::int64_t at) const noexcept {
        return (at == 0 ? size : at) - 1;
    }
    VESK_INLINE std::int64_t older(std::int64_t at) const noexcept {
        return at + 1 == size ? 0 : at + 1;
    }
    VESK_INLINE std::int64_t wrap(std::int64_t head) const noexcept {
        return place < head ? size : 0;
    }
    VESK_INLINE std::int64_t offset(std::int64_t head) const noexcept {
        return place - head + wrap(head);
    }
    VESK_INLINE Cursor cursor(std::int64_t head) const noexcept {
        return {static_cast<std::uint64_t>(offset(head)), span - left};
    }
    // What is left with half of the newest entry, of which the entry at the cursor is a part.
    VESK_INLINE std::int64_t rest(std::int64_t newest) const noexcept {
        return left + (newest >> 1);
    }
    VESK_INLINE bool settled(std::int64_t newest) const noexcept {
        return static_cast<std::uint64_t>(rest(newest)) <
               static_cast<std::uint64_t>(entries[place]);
    }

    // How many steps stay within the history and clear of the ring's start.
    VESK_INLINE std::int64_t free_steps(std::int64_t head, std::int64_t filled) const noexcept {
        const std::int64_t inside = smaller(offset(head) - 1, filled - 1 - offset(head));
        return larger(smaller(inside, smaller(head, place / 2)), std::int64_t{0});
    }
    // Moves with a push by one entry or not at all. That is nearly always right and nobody can
    // predict which, so that it is done without a branch.
    VESK_INLINE void step(std::int64_t newest) noexcept {
        const std::int64_t half = newest >> 1;
        // What would be left one entry on; there itself; one entry back. The first that is not
        // negative counts.
        const std::int64_t on = left - (newest - half);
        const std::int64_t not_on = on >> 63;
        const std::int64_t there = on + (entries[place - 1] & not_on);
        const std::int64_t not_there = there >> 63;
        const std::int64_t back = there + (entries[place - 2] & not_there);
        left = back - half;
        place += not_on + not_there;
    }
    // Stays with a push.
    VESK_INLINE void stay(std::int64_t newest) noexcept {
        place = newer(place);  // the push moved everything one place back
        left -= newest - entries[place];
    }
    // Moves as far as it takes and the history goes.
    VESK_INLINE void walk(std::int64_t newest, std::int64_t head, std::int64_t filled) noexcept {
        std::int64_t at = offset(head);
        for (; rest(newest) < 0 && at > 1; --at) {
            place = newer(place);
            left += entries[place];
        }
        for (; rest(newest) >= entries[place] && at < filled - 1; ++at) {
            left -= entries[place];
            place = older(place);
        }
    }
};

// Frames first to end - 1 of a head's two lanes of the plan; spans in samples.
VESK_INLINE void locate(ReadHead& head, const Entries& left, const Entries& right, Pair spans,
                        std::size_t first, std::size_t end, ReadPlan::Lane* lanes) noexcept {
    Scan l(head.rate_left, head.cursor_left, spans[0]);
    Scan r(head.rate_right, head.cursor_right, spans[1]);
    std::int64_t at = static_cast<std::int64_t>(head.rate_left.head);
    std::int64_t filled = static_cast<std::int64_t>(head.filled);
    // A history too short for the span ends the scan early, and the division that follows
    // extrapolates with the oldest known entry: right at once after a reset.
    const auto found = [&](const Scan& scan, std::int64_t newest, std::size_t frame,
                           std::int64_t wrap, ReadPlan::Lane& lane) VESK_LAMBDA {
        lane.rest[frame] = static_cast<float>(scan.rest(newest));
        lane.entry[frame] = static_cast<float>(scan.entries[scan.place]);
        lane.offset[frame] = static_cast<std::int32_t>(scan.place - at + wrap);
    };
    for (std::size_t frame = first; frame < end;) {
        const auto free =
            static_cast<std::size_t>(smaller(l.free_steps(at, filled), r.free_steps(at, filled)));
        const std::size_t stop = smaller(end, frame + free);
        const std::size_t begin = frame;
        const std::int64_t wrap_left = l.wrap(at);
        const std::int64_t wrap_right = r.wrap(at);
        for (; frame < stop; ++frame) {
            const std::int64_t new_left = left.values[frame];
            const std::int64_t new_right = right.values[frame];
            --at;
            l.entries[at] = new_left;
            r.entries[at] = new_right;
            l.step(new_left);
            r.step(new_right);
            if (!l.settled(new_left) || !r.settled(new_right)) [[unlikely]]
                break;
            found(l, new_left, frame, wrap_left, lanes[0]);
            found(r, new_right, frame, wrap_right, lanes[1]);
        }
        filled = smaller(filled + static_cast<std::int64_t>(frame - begin), l.size);
        if (frame == end) break;
        const std::int64_t new_left = left.values[frame];
        const std::int64_t new_right = right.values[frame];
        filled = smaller(filled + 1, l.size);
        if (frame == stop) {
            at = l.newer(at);
            l.entries[at] = new_left;
            r.entries[at] = new_right;
            l.stay(new_left);
            r.stay(new_right);
        }
        l.walk(new_left, at, filled);
        r.walk(new_right, at, filled);
        found(l, new_left, frame, l.wrap(at), lanes[0]);
        found(r, new_right, frame, r.wrap(at), lanes[1]);
        ++frame;
    }
    head.cursor_left = l.cursor(at);
    head.cursor_right = r.cursor(at);
    head.rate_left.head = head.rate_right.head = static_cast<std::uint64_t>(at);
    head.filled = static_cast<std::uint64_t>(filled);
}

VESK_INLINE void ReadHead::follow(const ReadHead& other, const Entries& left, const Entries& right,
                                  std::size_t first, std::size_t end) noexcept {
    rate_left.push(left.values + first, end - first);
    rate_right.push(right.values + first, end - first);
    cursor_left = other.cursor_left;
    cursor_right = other.cursor_right;
    filled = other.filled;
}

VESK_INLINE void ReadPlan::Lane::copy_finding(const Lane& other, std::size_t first,
                                              std::size_t end) noexcept {
    for (std::size_t i = first; i < end; ++i) {
        rest[i] = other.rest[i];
        entry[i] = other.entry[i];
        offset[i] = other.offset[i];
    }
}

// Line offsets in samples, between 1 and what has been written. What stands behind the n-th takes
// part and means nothing.
VESK_INLINE void ReadPlan::Lane::resolve(const float* limits, std::size_t n) noexcept {
    for (std::size_t i = 0; i < n; i += lanes_of<Oct>) {
        const Oct p = (load<Oct>(rest + i) / load<Oct>(entry + i) +
                       (floats(load<IntOct>(offset + i)) - 0.5f)) -
                      1.0f;
        const Oct top = load<Oct>(limits + i);
        const Oct position = p > top ? top : larger(p, all<Oct>(1.0f));  // not a number: 1
        const IntOct whole_part = whole(position);
        store(index + i, whole_part);
        store(fraction + i, position - floats(whole_part));
    }
}

VESK_INLINE void ReadPlan::resolve(std::size_t n) noexcept {
    for (int lane = 0; lane < lanes_in_use(); ++lane) {
        lanes[lane].resolve(limit, n);
        for (std::size_t i = n; i % lanes_of<Oct> != 0; ++i)  // waits for nobody
            lanes[lane].index[i] = static_cast<std::int32_t>(longest_run);
    }
}

VESK_INLINE std::size_t ReadPlan::free_frames(std::size_t first, std::size_t n) const noexcept {
    const std::size_t from = first - first % lanes_of<Oct>;
    IntOct nearest = load<IntOct>(lanes[0].index + from);
    for (int lane = 0; lane < lanes_in_use(); ++lane)
        for (std::size_t i = from; i < n; i += lanes_of<Oct>)
            nearest = smaller(nearest, load<IntOct>(lanes[lane].index + i));
    std::int32_t least = nearest[0];
    for (std::size_t i = 1; i < lanes_of<Oct>; ++i) least = smaller(least, nearest[i]);
    return smaller(static_cast<std::size_t>(least), n - first);
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

VESK_INLINE ReadPlan DelaySection::plan_reads(const Run& speed, std::size_t n) noexcept {
    const Run rate = map_run(
        n, [](Oct x) VESK_LAMBDA { return fast_exp2(x); }, speed);
    ReadPlan plan;
    const float whole_line = signed_float(delay_capacity - 3);
    for (std::size_t i = 0; i < n; ++i)
        plan.limit[i] =
            delay_filled + i < delay_capacity ? signed_float(delay_filled + i - 3) : whole_line;
    if (repitch)
        plan_tape(rate, n, plan);
    else
        plan_crossfade(rate, n, plan);
    plan.resolve(n);
    return plan;
}

VESK_INLINE void DelaySection::plan_tape(const Run& rate, std::size_t n, ReadPlan& plan) noexcept {
    const Pair wanted = wanted_delay();
    const Pair k = delay_smoothing_coefficient;
    Run glided;
    for (std::size_t i = 0; i < n; ++i) {
        const Pair next = (1.0f - k) * smoothed_delay + wanted * k;
        // Where rounding has stopped the smoother short of its goal it snaps onto it.
        smoothed_delay = next == smoothed_delay ? wanted : next;
        glided[i] = smoothed_delay;
    }
    glided.finish(n);
    const Run products = map_run(
        n, [](Oct r, Oct d) VESK_LAMBDA { return (r / d) * fixed_point_one; }, rate, glided);
    locate(tape_head, Entries(products, 0, n), Entries(products, 1, n), both(1.0f), 0, n,
           plan.lanes);
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

VESK_INLINE bool DelaySection::heads_alike() const noexcept {
    const auto& [h0, h1] = crossfade_heads;
    return head_delay[0][0] == head_delay[1][0] && head_delay[0][1] == head_delay[1][1] &&
           h0.cursor_left == h1.cursor_left && h0.cursor_right == h1.cursor_right;
}

VESK_INLINE void DelaySection::plan_crossfade(const Run& rate, std::size_t n,
                                              ReadPlan& plan) noexcept {
    const Run products = map_run(
        n, [](Oct r) VESK_LAMBDA { return r * fixed_point_one; }, rate);
    const Entries left(products, 0, n);
    const Entries right(products, 1, n);
    for (std::size_t first = 0, end = 0; first < n; first = end) {
        if (crossfade_remaining == 0) begin_crossfade();
        // To the end of the fade or of the run: so long the spans stand.
        end = crossfade_remaining == 0 ? first + 1 : smaller(n, first + crossfade_remaining);
        const bool alike = heads_alike();
        locate(crossfade_heads[0], left, right, head_delay[0], first, end, plan.lanes);
        if (!alike || end - first < n) plan.one_position = false;
        if (!alike) {
            locate(crossfade_heads[1], left, right, head_delay[1], first, end, plan.lanes + 2);
        } else {
            crossfade_heads[1].follow(crossfade_heads[0], left, right, first, end);
            if (!plan.one_position)
                for (int side = 0; side < 2; ++side)
                    plan.lanes[2 + side].copy_finding(plan.lanes[side], first, end);
        }
        for (std::size_t i = first; i < end; ++i) {
            plan.weight[i] = crossfade_position;
            if (crossfade_remaining == 0) break;
            // Computed back from the target, so that a fade ends on it exactly; serves the next
            // sample.
            --crossfade_remaining;
            crossfade_position =
                crossfade_target - signed_float(crossfade_remaining) * crossfade_step;
        }
    }
}

// n reads of one lane, from frame first of the plan on.
VESK_INLINE void read_lane(const CircularBuffer<float>& line, const ReadPlan::Lane& lane,
                           std::size_t first, std::size_t n, float* out) noexcept {
    // A frame's reads lie as much nearer as frames before it in this piece are unwritten.
    const auto points = [&](std::size_t i) VESK_LAMBDA {
        return points_at(line, lane.index[first + i] - static_cast<std::int32_t>(i));
    };
    std::size_t i = 0;
    for (; i + lanes_of<Quad> <= n; i += lanes_of<Quad>) {
        const Columns p = columns(points(i), points(i + 1), points(i + 2), points(i + 3));
        store(out + i,
              hermite_interpolate(p.a, p.b, p.c, p.d, load<Quad>(lane.fraction + first + i)));
    }
    for (; i < n; ++i) {
        const Quad p = points(i);
        out[i] = hermite_interpolate(p[0], p[1], p[2], p[3], lane.fraction[first + i]);
    }
}

VESK_INLINE Run DelaySection::read_delay(const ReadPlan& plan, std::size_t first,
                                         std::size_t n) const noexcept {
    alignas(Oct) float read[4][longest_run];
    for (int lane = 0; lane < plan.lanes_in_use(); ++lane)
        read_lane(lane % 2 == 0 ? delay_left : delay_right, plan.lanes[lane], first, n, read[lane]);
    const auto& second = plan.one_position ? read[0] : read[2];
    const auto& second_right = plan.one_position ? read[1] : read[3];
    Run out;
    for (std::size_t i = 0; i < n; i += lanes_of<Quad>) {
        Quad left = load<Quad>(read[0] + i);
        Quad right = load<Quad>(read[1] + i);
        if (!repitch) {
            const Quad x = load<Quad>(plan.weight + first + i);
            left = load<Quad>(second + i) * x + (1.0f - x) * left;
            right = load<Quad>(second_right + i) * x + (1.0f - x) * right;
        }
        out.set_four(i, interleaved(left, right));
    }
    return out;
}

VESK_INLINE void DelaySection::write_delay(const Run& value, std::size_t n) noexcept {
    float left[longest_run], right[longest_run];
    for (std::size_t i = 0; i < n; ++i) {
        left[i] = value[i][0];
        right[i] = value[i][1];
    }
    delay_left.push(left, n);
    delay_right.push(right, n);
    delay_filled = smaller(delay_filled + n, delay_capacity);
}

}  // namespace orvane::blocks::vesk
