// Two delay lines and the heads that read them: repitching like tape, or crossfading.
//
//   repitch    one head; span 1, entry = speed / delay. The delay glides through a one-pole.
//   crossfade  two heads; span = delay, entry = speed. A new delay takes effect by a 25 ms fade.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/prefetch.h"
#include "engine/read_head.h"

namespace orvane::blocks::vesk {

constexpr float line_seconds = 8.0f;  // of a delay line
constexpr float crossfade_seconds = 0.025f;
constexpr std::uint64_t zeros_of_empty_line = 4;  // the four points of the shortest read

// Where the frames of a run read, channel by channel.
struct ReadPlan {
    // One channel of one head: what its cursor finds, and the position that follows from it.
    struct Lane {
        ReadPositions found;
        std::int32_t index[max_block];  // whole part of the position on the line
        float fraction[max_block];      // the rest of it

        VESK_INLINE void resolve(const float* limits, std::size_t n) noexcept;
    };

    Lane lanes[4];             // left and right of head 0, then of head 1
    float limit[max_block];    // the oldest readable position
    float weight[max_block];   // of head 1
    bool one_position = true;  // both heads, or the only one, read as lanes 0 and 1 say

    // From findings to positions, for n frames.
    VESK_INLINE void resolve(std::size_t n) noexcept;

    // How many frames from first on read nothing that one of them writes; at least 1.
    VESK_INLINE std::size_t free_frames(std::size_t first, std::size_t n) const noexcept;

    VESK_INLINE int lanes_in_use() const noexcept { return one_position ? 2 : 4; }
};

struct DelaySection {
    float sample_rate;                        // Hz
    Pair delay_time = broadcast<Pair>(0.5f);  // s; left, right
    CircularBuffer<float> delay_left;         // mid in mid/side mode
    CircularBuffer<float> delay_right;        // side in mid/side mode
    std::uint64_t delay_capacity;             // the lines' size
    std::uint64_t delay_filled = 0;           // samples that may be read, at most delay_capacity

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

    // Asks for what the next n frames meet.
    VESK_INLINE void prefetch_block(std::size_t n) const noexcept;

    // Where a run of n frames reads: decided by the speeds, in octaves, and by no audio.
    VESK_INLINE ReadPlan plan_reads(const Block& speed, std::size_t n) noexcept;
    // What frames first to first + n - 1 of the plan read, while the line holds all before first.
    // None of them may read what another one is still to write: plan.free_frames(first) tells.
    VESK_INLINE Block read_delay(const ReadPlan& plan, std::size_t first,
                                 std::size_t n) const noexcept;
    VESK_INLINE void write_delay(const Block& value, std::size_t n) noexcept;

    // One frame: read before write.
    VESK_INLINE Pair read_delay(Pair speed) noexcept {
        return read_delay(plan_reads(block_of_one(speed), 1), 0, 1)[0];
    }
    VESK_INLINE void write_delay(Pair value) noexcept { write_delay(block_of_one(value), 1); }

    // delay_time in samples, 1 at least.
    VESK_INLINE Pair wanted_delay() const noexcept;

private:
    VESK_INLINE void plan_tape(const Block& rate, std::size_t n, ReadPlan& plan) noexcept;
    VESK_INLINE void plan_crossfade(const Block& rate, std::size_t n, ReadPlan& plan) noexcept;
    template <class T>
    VESK_INLINE T read_head(const ReadPlan::Lane* lanes, std::size_t first,
                            std::size_t i) const noexcept;
    VESK_INLINE void begin_crossfade() noexcept;
    // While the delay rests the heads alternate on one position: what one finds the other finds.
    VESK_INLINE bool heads_alike() const noexcept;
};

VESK_INLINE float signed_float(std::uint64_t x) noexcept {
    return static_cast<float>(static_cast<std::int64_t>(x));  // x is far below 2^63
}

// Line offsets in samples, between 1 and what has been written.
VESK_INLINE void ReadPlan::Lane::resolve(const float* limits, std::size_t n) noexcept {
    const auto position_of = [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T part = load<T>(found.rest + i) / load<T>(found.entry + i);
        const T p = (part + (to_float(load<Integers<T>>(found.offset + i)) - 0.5f)) - 1.0f;
        const T top = load<T>(limits + i);
        const T position = p > top ? top : max(p, broadcast<T>(1.0f));  // not a number: 1
        const Integers<T> whole_part = to_int(position);
        store(index + i, whole_part);
        store(fraction + i, position - to_float(whole_part));
    };
    std::size_t i = 0;
    for (; i + lane_count<Oct> <= n; i += lane_count<Oct>) position_of.template operator()<Oct>(i);
    for (; i < n; ++i) position_of.template operator()<float>(i);
}

VESK_INLINE void ReadPlan::resolve(std::size_t n) noexcept {
    for (int lane = 0; lane < lanes_in_use(); ++lane) lanes[lane].resolve(limit, n);
}

VESK_INLINE std::size_t ReadPlan::free_frames(std::size_t first, std::size_t n) const noexcept {
    std::int32_t least = static_cast<std::int32_t>(n - first);
    for (int lane = 0; lane < lanes_in_use(); ++lane)
        for (std::size_t i = first; i < n; ++i) least = min(lanes[lane].index[i], least);
    return static_cast<std::size_t>(least);
}

VESK_INLINE Pair DelaySection::wanted_delay() const noexcept {
    const Pair wanted = delay_time * sample_rate;
    return wanted < 1.0f ? broadcast<Pair>(1.0f) : wanted;
}

VESK_INLINE void DelaySection::prefetch_block(std::size_t n) const noexcept {
    const auto pushes = [&](const ReadHead& head) VESK_LAMBDA {
        prefetch(head.rate_left.room(n), n);
        prefetch(head.rate_right.room(n), n);
    };
    // A line is read about as far back as the entries are.
    const auto reads = [&](const ReadHead& head) VESK_LAMBDA {
        prefetch(head.rate_left.run_at(head.cursor_left.offset) - n, n);
        prefetch(head.rate_right.run_at(head.cursor_right.offset) - n, n);
        prefetch(delay_left.run_at(head.cursor_left.offset) - n, n);
        prefetch(delay_right.run_at(head.cursor_right.offset) - n, n);
    };
    if (repitch) {
        pushes(tape_head);
        reads(tape_head);
    } else {
        pushes(crossfade_heads[0]);
        pushes(crossfade_heads[1]);
        reads(crossfade_heads[0]);
        if (!heads_alike()) reads(crossfade_heads[1]);
    }
    prefetch(delay_left.room(n), n);
    prefetch(delay_right.room(n), n);
}

VESK_INLINE ReadPlan DelaySection::plan_reads(const Block& speed, std::size_t n) noexcept {
    const Block rate = map_block(
        n, [](auto x) VESK_LAMBDA { return fast_exp2(x); }, speed);
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

VESK_INLINE void DelaySection::plan_tape(const Block& rate, std::size_t n,
                                         ReadPlan& plan) noexcept {
    const Pair wanted = wanted_delay();
    const Pair k = delay_smoothing_coefficient;
    // Where rounding has stopped the smoother short of its goal it snaps onto it.
    const auto after = [&](Pair x) VESK_LAMBDA {
        const Pair next = (1.0f - k) * x + wanted * k;
        return next == x ? wanted : next;
    };
    const auto same = [](Pair a, Pair b) VESK_LAMBDA { return a[0] == b[0] && a[1] == b[1]; };
    Block glided;
    if (same(smoothed_delay, wanted) && same(after(wanted), wanted)) {  // and so it stays
        for (std::size_t i = 0; i < n; ++i) glided[i] = wanted;
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            smoothed_delay = after(smoothed_delay);
            glided[i] = smoothed_delay;
        }
    }
    const Block products = map_block(
        n, [](auto r, auto d) VESK_LAMBDA { return limited_entry((r / d) * fixed_point_one); },
        rate, glided);
    tape_head.locate(Entries(products, n), broadcast<Pair>(1.0f), 0, n, plan.lanes[0].found,
                     plan.lanes[1].found);
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

VESK_INLINE void DelaySection::plan_crossfade(const Block& rate, std::size_t n,
                                              ReadPlan& plan) noexcept {
    const Block products = map_block(
        n, [](auto r) VESK_LAMBDA { return limited_entry(r * fixed_point_one); }, rate);
    const Entries pushed(products, n);
    auto& [h0, h1] = crossfade_heads;
    auto& [left0, right0, left1, right1] = plan.lanes;
    for (std::size_t first = 0, end = 0; first < n; first = end) {
        if (crossfade_remaining == 0) begin_crossfade();
        // To the end of the fade or of the run: so long the spans stand.
        end = crossfade_remaining == 0 ? first + 1 : min(n, first + crossfade_remaining);
        const bool alike = heads_alike();
        h0.locate(pushed, head_delay[0], first, end, left0.found, right0.found);
        if (!alike || end - first < n) plan.one_position = false;
        if (!alike) {
            h1.locate(pushed, head_delay[1], first, end, left1.found, right1.found);
        } else {
            h1.follow(h0, pushed, first, end);
            if (!plan.one_position) {
                left1.found.copy(left0.found, first, end);
                right1.found.copy(right0.found, first, end);
            }
        }
        plan.weight[first] = crossfade_position;
        if (crossfade_remaining == 0) continue;
        // Computed back from the target, so that a fade ends on it exactly; what a sample leaves
        // serves the next one.
        const auto remaining = static_cast<std::int32_t>(crossfade_remaining);
        const auto later = [&](std::size_t i) VESK_LAMBDA {
            const auto left = remaining - static_cast<std::int32_t>(i - first);
            return crossfade_target - static_cast<float>(left) * crossfade_step;
        };
        for (std::size_t i = first + 1; i < end; ++i) plan.weight[i] = later(i);
        crossfade_position = later(end);
        crossfade_remaining -= end - first;
    }
}

// Where on a line the four points around a position begin; distance is its whole part, less one.
template <class Ints>
VESK_INLINE Ints points_at(const CircularBuffer<float>& line, Ints distance) noexcept {
    const auto size = static_cast<std::int32_t>(line.size);
    const Ints at = distance + static_cast<std::int32_t>(line.head);
    return at >= size ? at - size : at;
}

// What one head reads for frame i of a piece that begins at frame first of the plan, or for four
// frames: then all four of the left channel come first.
template <class T>
VESK_INLINE T DelaySection::read_head(const ReadPlan::Lane* lanes, std::size_t first,
                                      std::size_t i) const noexcept {
    const ReadPlan::Lane& left = lanes[0];
    const ReadPlan::Lane& right = lanes[1];
    const float* const l = delay_left.storage.get();
    const float* const r = delay_right.storage.get();
    // A frame's reads lie as much nearer as frames before it in this piece are unwritten.
    const std::int32_t unwritten = static_cast<std::int32_t>(i) + 1;
    if constexpr (std::is_same_v<T, Pair>) {
        const Quad a = load<Quad>(l + points_at(delay_left, left.index[first + i] - unwritten));
        const Quad b = load<Quad>(r + points_at(delay_right, right.index[first + i] - unwritten));
        const Pair t{left.fraction[first + i], right.fraction[first + i]};
        return hermite_interpolate(Pair{a[0], b[0]}, Pair{a[1], b[1]}, Pair{a[2], b[2]},
                                   Pair{a[3], b[3]}, t);
    } else {
        const IntQuad nearer = unwritten + IntQuad{0, 1, 2, 3};
        const auto places = [&](const CircularBuffer<float>& line,
                                const ReadPlan::Lane& lane) VESK_LAMBDA {
            return points_at(line, load<IntQuad>(lane.index + first + i) - nearer);
        };
        const IntQuad a = places(delay_left, left);
        const IntQuad b = places(delay_right, right);
        const auto points = [&](int k) VESK_LAMBDA {
            return combine(load<Quad>(l + a[k]), load<Quad>(r + b[k]));
        };
        const Transposed p = transpose(points(0), points(1), points(2), points(3));
        const Oct t =
            combine(load<Quad>(left.fraction + first + i), load<Quad>(right.fraction + first + i));
        return hermite_interpolate(p.a, p.b, p.c, p.d, t);
    }
}

VESK_INLINE Block DelaySection::read_delay(const ReadPlan& plan, std::size_t first,
                                           std::size_t n) const noexcept {
    Block out;
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        T x = read_head<T>(plan.lanes, first, i);
        if (!repitch) {
            const T y = plan.one_position ? x : read_head<T>(plan.lanes + 2, first, i);
            const auto weight = load<Mono<T>>(plan.weight + first + i);
            const T w = planar(weight, weight);
            x = y * w + (1.0f - w) * x;
        }
        out.set(i, planar_to_interleaved(x));
    });
    return out;
}

VESK_INLINE void DelaySection::write_delay(const Block& value, std::size_t n) noexcept {
    float* const left = delay_left.room(n);
    float* const right = delay_right.room(n);
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T x = value.at<T>(i);
        const std::size_t to = n - i - frames_per<T>;  // the newest first
        store(left + to, reverse<sizeof(float)>(left_lanes(x)));
        store(right + to, reverse<sizeof(float)>(right_lanes(x)));
    });
    delay_left.pushed(n);
    delay_right.pushed(n);
    delay_filled = min(delay_filled + n, delay_capacity);
}

}  // namespace orvane::blocks::vesk
