// Two side-chained dynamics units, both keyed by the raw input: a gate on the input of the delay
// lines and a ducker on the wet output.
#pragma once

#include <cstddef>

#include "engine/block.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// Opens while the key input is loud enough: a peak detector, a switch with hysteresis and a
// smoothed gain. The only hold time is the detector's decay; a closed gate falls to silence.
struct Gate {
    float gate_sample_rate;  // Hz
    bool gate_open = false;
    float gate_gain = 0.0f;               // 0 to 1
    float gate_envelope = 0.0f;           // of the peak detector, linear
    float gate_peak_coefficient;          // decay of the envelope, of 30 ms
    float gate_attack_coefficient;        // of 1 ms
    float gate_release_time = 0.05f;      // s
    float gate_release_coefficient;       // of gate_release_time
    float gate_close_threshold = 0.125f;  // linear; closes at or under it
    float gate_open_threshold = 0.25f;    // linear; opens over it

    explicit Gate(float rate);
    void set_gate_threshold(float db);
    void set_gate_release(float seconds);
    void reset_gate() noexcept;

    // It closes 6 dB below the level at which it opens.
    template <class T>
    VESK_INLINE static T close_threshold(T open) noexcept {
        return open * 0.5f;
    }
    // The key signal: the greater absolute value of the two channels, in both lanes.
    VESK_INLINE static Block peaks(const Block& input, std::size_t n) noexcept;
    // One frame of the recursive part: gives the gain.
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

    // The static curve: the gain change in dB that each detector value calls for. threshold: the
    // values of threshold_db.
    template <class Values>
    VESK_INLINE Block targets(const Block& detector, Values threshold,
                              std::size_t n) const noexcept;
    // One frame of the recursive part, the smoothing: gives reduction_db.
    VESK_INLINE Pair step(Pair target) noexcept;
    // Applies the gain changes, in dB, to wet.
    VESK_INLINE void apply(Block& wet, const Block& reduction, std::size_t n) const noexcept;
};

VESK_INLINE Block Gate::peaks(const Block& input, std::size_t n) noexcept {
    return map_block(
        n,
        []<class T>(T x) VESK_LAMBDA {
            const T level = abs(x);
            return max(dup_right(level), dup_left(level));
        },
        input);
}

VESK_INLINE float Gate::step(float peak) noexcept {
    gate_envelope = max((1.0f - gate_peak_coefficient) * gate_envelope, peak);
    gate_open =
        (gate_open || gate_envelope > gate_open_threshold) && gate_envelope > gate_close_threshold;
    // Both gains are computed, so that the choice is a select and no branch.
    const float opening = gate_attack_coefficient + (1.0f - gate_attack_coefficient) * gate_gain;
    const float closing = (1.0f - gate_release_coefficient) * gate_gain;
    gate_gain = gate_open ? opening : closing;
    return gate_gain;
}

template <class Values>
VESK_INLINE Block Ducker::targets(const Block& detector, Values threshold,
                                  std::size_t n) const noexcept {
    return map_block(
        n,
        [this]<class T>(T d, T t) VESK_LAMBDA {
            constexpr float detector_floor = 1e-6f;  // keeps the logarithm's argument positive
            const T raw = abs(d);
            const T level = raw < detector_floor ? broadcast<T>(detector_floor) : raw;
            const T over = fast_gain_to_db(level) - t;
            return (broadcast<T>(slope) - 1.0f) * (over >= 0.0f ? over : T{});
        },
        detector, threshold);
}

VESK_INLINE Pair Ducker::step(Pair target) noexcept {
    const Pair release = (1.0f - release_coefficient) * reduction_db + target * release_coefficient;
    const Pair attack = (1.0f - attack_coefficient) * reduction_db + target * attack_coefficient;
    reduction_db = target >= reduction_db ? release : attack;
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
