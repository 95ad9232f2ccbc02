// Two units that listen to the raw input and change another signal: a gate on what enters the
// lines, a ducker on what leaves them.
#pragma once

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

    // The gain for this sample's signal, from the raw input.
    VESK_INLINE float step_gate(Pair input) noexcept;
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

    VESK_INLINE Pair process(Pair wet, Pair detector) noexcept;
};

VESK_INLINE float Gate::step_gate(Pair input) noexcept {
    const Pair size = magnitude(input);
    const float peak = larger(size[1], size[0]);
    gate_envelope = larger((1.0f - gate_peak_coefficient) * gate_envelope, peak);
    gate_open =
        (gate_open || gate_envelope > gate_open_threshold) && gate_envelope > gate_close_threshold;
    const float c = gate_open ? gate_attack_coefficient : gate_release_coefficient;
    const float goal = gate_open ? 1.0f : 0.0f;
    gate_gain = goal * c + (1.0f - c) * gate_gain;
    return gate_gain;
}

VESK_INLINE Pair Ducker::process(Pair wet, Pair detector) noexcept {
    constexpr float detector_floor = 1e-6f;  // keeps the logarithm's argument positive
    const Pair size = magnitude(detector);
    const Pair level = size < detector_floor ? both(detector_floor) : size;
    const Pair over = fast_gain_to_db(level) - threshold_db;
    const Pair target = (slope - 1.0f) * (over >= 0.0f ? over : Pair{});
    // At equality it is the release.
    const Pair c = target >= reduction_db ? release_coefficient : attack_coefficient;
    reduction_db = (1.0f - c) * reduction_db + target * c;
    return fast_db_to_gain(reduction_db) * makeup_gain * wet;
}

}  // namespace orvane::blocks::vesk
