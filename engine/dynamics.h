// Two units that listen to the raw input and change another signal: a gate on what enters the
// lines, a ducker on what leaves them.
#pragma once

#include <cstddef>

#include "engine/block.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// Passes a signal while the input is loud enough: a peak hold, a switch with two thresholds and a
// smoothed gain. It has no hold time but the decay of the level, and no floor.
struct Gate {
    float gate_sample_rate;  // Hz
    bool gate_open = false;
    float gate_gain = 0.0f;               // 0 to 1
    float gate_envelope = 0.0f;           // peak-hold level, linear
    float gate_peak_coefficient;          // of 30 ms
    float gate_attack_coefficient;        // of 1 ms
    float gate_release_time = 0.05f;      // s
    float gate_release_coefficient;       // of gate_release_time
    float gate_close_threshold = 0.125f;  // linear; at or under it the switch falls
    float gate_open_threshold = 0.25f;    // linear; over it the switch rises

    explicit Gate(float rate);
    void set_gate_threshold(float db);  // 6 dB of hysteresis below it
    void set_gate_release(float seconds);
    void reset_gate() noexcept;

    // The louder side of a run's raw input, and what one frame of it does to the gain.
    VESK_INLINE static Block peaks(const Block& input, std::size_t n) noexcept;
    VESK_INLINE float step(float peak) noexcept;
};

// Lowers the wet signal while the input plays: a downward compressor whose gain change is
// smoothed in dB. Both lanes get the same detector, so they always hold equal values.
struct Ducker {
    Pair sample_rate;  // Hz
    Pair threshold_db = broadcast<Pair>(-6.0f);
    Pair slope = broadcast<Pair>(0.2f);         // dB out per dB in above the threshold: 5 to 1
    Pair attack_time = broadcast<Pair>(0.01f);  // s
    Pair release_time = broadcast<Pair>(0.1f);  // s
    Pair attack_coefficient;                    // of attack_time
    Pair release_coefficient;                   // of release_time
    Pair makeup_gain = broadcast<Pair>(1.0f);   // linear
    Pair reduction_db{};                        // the only state; 0 or below

    explicit Ducker(float rate);
    void set_release(float seconds);
    void reset() noexcept { reduction_db = Pair{}; }

    // Where the detector wants the gain to go, dB, and one frame's step towards it.
    VESK_INLINE Block targets(const Block& detector, std::size_t n) const noexcept;
    VESK_INLINE Pair step(Pair target) noexcept;
    VESK_INLINE void apply(Block& wet, const Block& reduction, std::size_t n) const noexcept;
    // One frame of all.
    VESK_INLINE Pair process(Pair wet, Pair detector) noexcept {
        const Block reduction = block_of_one(step(targets(block_of_one(detector), 1)[0]));
        Block ducked = block_of_one(wet);
        apply(ducked, reduction, 1);
        return ducked[0];
    }
};

VESK_INLINE Block Gate::peaks(const Block& input, std::size_t n) noexcept {
    return map_block(
        n,
        []<class T>(T x) VESK_LAMBDA {
            const T size = abs(x);
            return max(dup_right(size), dup_left(size));
        },
        input);
}

VESK_INLINE float Gate::step(float peak) noexcept {
    gate_envelope = max((1.0f - gate_peak_coefficient) * gate_envelope, peak);
    gate_open =
        (gate_open || gate_envelope > gate_open_threshold) && gate_envelope > gate_close_threshold;
    // Both ways out of what they share: a choice between two results, not a branch.
    const float opening = gate_attack_coefficient + (1.0f - gate_attack_coefficient) * gate_gain;
    const float closing = (1.0f - gate_release_coefficient) * gate_gain;
    gate_gain = gate_open ? opening : closing;
    return gate_gain;
}

VESK_INLINE Block Ducker::targets(const Block& detector, std::size_t n) const noexcept {
    return map_block(
        n,
        [this]<class T>(T d) VESK_LAMBDA {
            constexpr float detector_floor = 1e-6f;  // keeps the logarithm's argument positive
            const T size = abs(d);
            const T level = size < detector_floor ? broadcast<T>(detector_floor) : size;
            const T over = fast_gain_to_db(level) - broadcast<T>(threshold_db);
            return (broadcast<T>(slope) - 1.0f) * (over >= 0.0f ? over : T{});
        },
        detector);
}

VESK_INLINE Pair Ducker::step(Pair target) noexcept {
    // At equality it is the release.
    const Pair back = (1.0f - release_coefficient) * reduction_db + target * release_coefficient;
    const Pair down = (1.0f - attack_coefficient) * reduction_db + target * attack_coefficient;
    reduction_db = target >= reduction_db ? back : down;
    return reduction_db;
}

VESK_INLINE void Ducker::apply(Block& wet, const Block& reduction, std::size_t n) const noexcept {
    map_into(
        wet, n,
        [this]<class T>(T r, T w)
            VESK_LAMBDA { return fast_db_to_gain(r) * broadcast<T>(makeup_gain) * w; },
        reduction, wet);
}

}  // namespace orvane::blocks::vesk
