// Two units that listen to the raw input and change another signal: a gate on what enters the
// lines, a ducker on what leaves them.
#pragma once

#include <cstddef>

#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/run.h"

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

    // The gain for each frame of a signal, from the raw input; both lanes alike.
    VESK_INLINE Run gate_gains(const Run& input, std::size_t n) noexcept;
    VESK_INLINE float step_gate(Pair input) noexcept {
        return gate_gains(run_of_one(input), 1)[0][0];
    }
};

// Lowers the wet signal while the input plays: a downward compressor whose gain change is
// smoothed in dB. Both lanes get the same detector, so they always hold equal values.
struct Ducker {
    Pair sample_rate;  // Hz
    Pair threshold_db = both(-6.0f);
    Pair slope = both(0.2f);         // dB out per dB in above the threshold: 5 to 1
    Pair attack_time = both(0.01f);  // s
    Pair release_time = both(0.1f);  // s
    Pair attack_coefficient;         // of attack_time
    Pair release_coefficient;        // of release_time
    Pair makeup_gain = both(1.0f);   // linear
    Pair reduction_db{};             // the only state; 0 or below

    explicit Ducker(float rate);
    void set_release(float seconds);
    void reset() noexcept { reduction_db = Pair{}; }

    VESK_INLINE Run process(const Run& wet, const Run& detector, std::size_t n) noexcept;
    VESK_INLINE Pair process(Pair wet, Pair detector) noexcept {
        return process(run_of_one(wet), run_of_one(detector), 1)[0];
    }
};

VESK_INLINE Run Gate::gate_gains(const Run& input, std::size_t n) noexcept {
    const Run peak = map_run(
        n,
        [](Oct x) {
            const Oct size = magnitude(x);
            return larger(rights(size), lefts(size));
        },
        input);
    Run gains;
    for (std::size_t i = 0; i < n; ++i) {
        gate_envelope = larger((1.0f - gate_peak_coefficient) * gate_envelope, peak[i][0]);
        gate_open = (gate_open || gate_envelope > gate_open_threshold) &&
                    gate_envelope > gate_close_threshold;
        const float c = gate_open ? gate_attack_coefficient : gate_release_coefficient;
        const float goal = gate_open ? 1.0f : 0.0f;
        gate_gain = goal * c + (1.0f - c) * gate_gain;
        gains[i] = both(gate_gain);
    }
    gains.finish(n);
    return gains;
}

VESK_INLINE Run Ducker::process(const Run& wet, const Run& detector, std::size_t n) noexcept {
    constexpr float detector_floor = 1e-6f;  // keeps the logarithm's argument positive
    const Run target = map_run(
        n,
        [this](Oct d) {
            const Oct size = magnitude(d);
            const Oct level = size < detector_floor ? all<Oct>(detector_floor) : size;
            const Oct over = fast_gain_to_db(level) - pairs(threshold_db);
            return (pairs(slope) - 1.0f) * (over >= 0.0f ? over : Oct{});
        },
        detector);
    Run reduction;
    for (std::size_t i = 0; i < n; ++i) {
        // At equality it is the release.
        const Pair back =
            (1.0f - release_coefficient) * reduction_db + target[i] * release_coefficient;
        const Pair down =
            (1.0f - attack_coefficient) * reduction_db + target[i] * attack_coefficient;
        reduction_db = target[i] >= reduction_db ? back : down;
        reduction[i] = reduction_db;
    }
    reduction.finish(n);
    return map_run(
        n, [this](Oct r, Oct w) { return fast_db_to_gain(r) * pairs(makeup_gain) * w; }, reduction,
        wet);
}

}  // namespace orvane::blocks::vesk
