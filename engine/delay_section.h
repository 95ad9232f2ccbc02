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
#include "engine/interpolated_read.h"
#include "engine/lanes.h"
#include "engine/prefetch.h"
#include "engine/read_head.h"
#include "engine/read_plan.h"

namespace orvane::blocks::vesk {

constexpr float line_seconds = 8.0f;  // of a delay line
constexpr float crossfade_seconds = 0.025f;
constexpr std::uint64_t zeros_of_empty_line = 4;  // the four points of the shortest read

struct DelaySection {
    float sample_rate;                        // Hz
    Pair delay_time = broadcast<Pair>(0.5f);  // s; left, right
    CircularBuffer<float> delay_left;         // mid in mid/side mode
    CircularBuffer<float> delay_right;        // side in mid/side mode
    std::uint64_t delay_capacity;             // the lines' size
    std::uint64_t delay_filled = 0;           // samples that may be read, at most delay_capacity

    bool repitch = true;
    EntryRings entry_rings;  // of the mode in use
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

    // Silences both lines in constant time: nothing older than delay_filled is ever read.
    void clear_delay_lines() noexcept;
    // Sets all heads to delay_time at once, without glide or fade.
    void reset_read_heads() noexcept;
    void set_repitch(bool value) noexcept;

    // Prefetches what the next n frames read and write.
    VESK_INLINE void prefetch_block(std::size_t n) const noexcept;

    // A block is planned as a whole from its speeds, in octaves, then read and written in
    // sub-blocks no longer than plan.max_sub_block: read_delay(plan, first, n) gives frames first
    // to first + n - 1 and needs all frames before first to be written.
    VESK_INLINE ReadPlan plan_reads(const Block& speed, std::size_t n) noexcept;
    VESK_INLINE Block read_delay(const ReadPlan& plan, std::size_t first,
                                 std::size_t n) const noexcept;
    VESK_INLINE void write_delay(const Block& value, std::size_t n) noexcept;

    // delay_time in samples, at least 1.
    VESK_INLINE Pair wanted_delay() const noexcept;

    // Where a head stood in the last frame processed: what is heard through it is so old. On its
    // way there after a change, or moved by the read speed, that is another time than delay_time.
    struct DelayRead {
        Pair seconds{};       // left, right; mid and side in mid/side mode
        float weight = 0.0f;  // its share of what is heard, 0 to 1
    };
    // The tape head and nothing, or both crossfade heads. For displays, between two calls of
    // process.
    std::array<DelayRead, 2> delays_read() const noexcept;
    Pair delay_heard() const noexcept;  // s; of the head that is heard most

private:
    VESK_INLINE void plan_tape(const Block& rate, std::size_t n, ReadPlan& plan) noexcept;
    VESK_INLINE void plan_crossfade(const Block& rate, std::size_t n, ReadPlan& plan) noexcept;
    VESK_INLINE void begin_crossfade() noexcept;
    // While delay_time is constant, fades alternate between two equal heads: one scan serves both.
    VESK_INLINE bool heads_equal() const noexcept;
};

VESK_INLINE Pair DelaySection::wanted_delay() const noexcept {
    const Pair wanted = delay_time * sample_rate;
    return wanted < 1.0f ? broadcast<Pair>(1.0f) : wanted;
}

VESK_INLINE void DelaySection::prefetch_block(std::size_t n) const noexcept {
    // The position on the line is within a sample or two of the cursor's offset.
    const auto prefetch_reads = [&](const ReadHead& head) VESK_LAMBDA {
        prefetch(entry_rings.left.pointer_at(static_cast<std::uint64_t>(head.offset_left)) - n, n);
        prefetch(entry_rings.right.pointer_at(static_cast<std::uint64_t>(head.offset_right)) - n,
                 n);
        prefetch(delay_left.pointer_at(static_cast<std::uint64_t>(head.offset_left)) - n, n);
        prefetch(delay_right.pointer_at(static_cast<std::uint64_t>(head.offset_right)) - n, n);
    };
    prefetch(entry_rings.left.write_pointer(n), n);
    prefetch(entry_rings.right.write_pointer(n), n);
    if (repitch) {
        prefetch_reads(tape_head);
    } else {
        prefetch_reads(crossfade_heads[0]);
        if (!heads_equal()) prefetch_reads(crossfade_heads[1]);
    }
    prefetch(delay_left.write_pointer(n), n);
    prefetch(delay_right.write_pointer(n), n);
}

VESK_INLINE ReadPlan DelaySection::plan_reads(const Block& speed, std::size_t n) noexcept {
    const Block rate = map_block(
        n, [](auto x) VESK_LAMBDA { return fast_exp2(x); }, speed);
    ReadPlan plan;
    if (repitch)
        plan_tape(rate, n, plan);
    else
        plan_crossfade(rate, n, plan);
    plan.resolve(static_cast<std::int32_t>(delay_filled), static_cast<std::int32_t>(delay_capacity),
                 n);
    return plan;
}

VESK_INLINE void DelaySection::plan_tape(const Block& rate, std::size_t n,
                                         ReadPlan& plan) noexcept {
    const Pair wanted = wanted_delay();
    const Pair k = delay_smoothing_coefficient;
    // A smoother that rounding has stopped short of its goal snaps onto it.
    const auto smoother_step = [&](Pair x) VESK_LAMBDA {
        const Pair next = (1.0f - k) * x + wanted * k;
        return next == x ? wanted : next;
    };
    const auto same = [](Pair a, Pair b) VESK_LAMBDA { return a[0] == b[0] && a[1] == b[1]; };
    Block delay;
    if (same(smoothed_delay, wanted) && same(smoother_step(wanted), wanted)) {
        for (std::size_t i = 0; i < n; ++i) delay[i] = wanted;
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            smoothed_delay = smoother_step(smoothed_delay);
            delay[i] = smoothed_delay;
        }
    }
    const Block entries = map_block(
        n, [](auto r, auto d) VESK_LAMBDA { return limited_entry((r / d) * fixed_point_one); },
        rate, delay);
    RingPosition position(entry_rings);
    entry_rings.push(entries, n);
    tape_head.locate(entry_rings, position, broadcast<Pair>(1.0f), 0, n, plan.channels[0].found,
                     plan.channels[1].found);
    entry_rings.filled = static_cast<std::uint64_t>(position.filled);
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
    // The only place where this mode reads delay_time.
    head_delay[next_head] = wanted_delay();
    // From there the scan searches for the new delay, in this same sample.
    crossfade_heads[next_head] = crossfade_heads[active_head];
    active_head = next_head;
}

VESK_INLINE bool DelaySection::heads_equal() const noexcept {
    const auto& [h0, h1] = crossfade_heads;
    return head_delay[0][0] == head_delay[1][0] && head_delay[0][1] == head_delay[1][1] &&
           h0.offset_left == h1.offset_left && h0.offset_right == h1.offset_right;
}

VESK_INLINE void DelaySection::plan_crossfade(const Block& rate, std::size_t n,
                                              ReadPlan& plan) noexcept {
    const Block entries = map_block(
        n, [](auto r) VESK_LAMBDA { return limited_entry(r * fixed_point_one); }, rate);
    RingPosition position(entry_rings);
    entry_rings.push(entries, n);
    auto& [h0, h1] = crossfade_heads;
    auto& [left0, right0, left1, right1] = plan.channels;
    for (std::size_t first = 0, end = 0; first < n; first = end) {
        if (crossfade_remaining == 0) begin_crossfade();
        // Up to the end of the fade or of the block the spans are constant.
        end = crossfade_remaining == 0
                  ? first + 1
                  : static_cast<std::size_t>(min<std::uint64_t>(n, first + crossfade_remaining));
        const bool equal = heads_equal();
        const RingPosition at_first = position;
        h0.locate(entry_rings, position, head_delay[0], first, end, left0.found, right0.found);
        if (!equal || end - first < n) plan.one_position = false;
        if (!equal) {
            position = at_first;
            h1.locate(entry_rings, position, head_delay[1], first, end, left1.found, right1.found);
        } else {
            h1 = h0;
            if (!plan.one_position) {
                left1.found.copy(left0.found, first, end);
                right1.found.copy(right0.found, first, end);
            }
        }
        plan.weight[first] = crossfade_position;
        if (crossfade_remaining == 0) continue;
        // Computed back from the target, so that a fade ends on it exactly. Each sample computes
        // the weight of the next one.
        const auto remaining = static_cast<std::int32_t>(crossfade_remaining);
        const auto weight_of = [&](auto frames_on) VESK_LAMBDA {
            return crossfade_target - to_float(remaining - frames_on) * crossfade_step;
        };
        float* const next_weights = plan.weight + first + 1;
        for_each_mono_vector(end - first - 1, [&]<class T>(std::size_t i) VESK_LAMBDA {
            store(next_weights + i, weight_of(value_indices<T>(i + 1)));
        });
        crossfade_position = weight_of(static_cast<std::int32_t>(end - first));
        crossfade_remaining -= end - first;
    }
    entry_rings.filled = static_cast<std::uint64_t>(position.filled);
}

VESK_INLINE Block DelaySection::read_delay(const ReadPlan& plan, std::size_t first,
                                           std::size_t n) const noexcept {
    Block out;
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        T x = read_interpolated<T>(delay_left, delay_right, plan.channels, first, i);
        if (!repitch) {
            const T y = plan.one_position ? x
                                          : read_interpolated<T>(delay_left, delay_right,
                                                                 plan.channels + 2, first, i);
            const auto weight = load<Mono<T>>(plan.weight + first + i);
            const T w = planar(weight, weight);
            x = y * w + (1.0f - w) * x;
        }
        out.set(i, planar_to_interleaved(x));
    });
    return out;
}

VESK_INLINE void DelaySection::write_delay(const Block& value, std::size_t n) noexcept {
    float* const left = delay_left.write_pointer(n);
    float* const right = delay_right.write_pointer(n);
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T x = value.at<T>(i);
        const std::size_t to = n - i - frames_per<T>;  // newest first
        store(left + to, reverse<sizeof(float)>(left_lanes(x)));
        store(right + to, reverse<sizeof(float)>(right_lanes(x)));
    });
    delay_left.advance(n);
    delay_right.advance(n);
    delay_filled = min(delay_filled + n, delay_capacity);
}

}  // namespace orvane::blocks::vesk
