// Moves the delay's read speed: an oscillator, an envelope follower, a blend of the two and a
// 30 Hz smoother behind it. It touches no audio; its output counts in full swings.
#pragma once

#include <array>
#include <cstdint>

#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/modes.h"

namespace orvane::blocks::vesk {

struct Modulator {
    using waveform_mode = kv7::orv::vesk::waveform_mode;

    float phase = 0.0f;     // 0 up to 1; the left channel's
    float phase_increment;  // per sample
    Pair last_phase{};      // the phases that the latest sample used
    float sample_rate;      // Hz
    waveform_mode waveform = waveform_mode::sine;
    float frequency = 1.0f;  // Hz
    Pair smoothed{};         // the smoother's state, and the output
    float smoothing_coefficient;
    float smoothing_time = 0.005305165f;        // s: 1 / (2 * pi * 30)
    float phase_offset = 0.0f;                  // cycles that the right channel is ahead, 0 to 0.5
    std::array<std::uint32_t, 2> random_state;  // never both 0
    Pair random_value{};                        // held by "Random"
    Pair envelope{};
    float envelope_mix = 0.0f;           // 0 oscillator only, 1 envelope only
    float envelope_attack_coefficient;   // of 8 ms
    float envelope_release_coefficient;  // of 222 ms

    explicit Modulator(float rate);  // seeded from the system's random source
    void set_frequency(float hz);    // limited to half the rate in phase_increment only
    void set_phase_offset(float degrees);
    void reset() noexcept;  // random_state goes on

    // One sample; detector is what the envelope follows.
    VESK_INLINE Pair process(Pair detector) noexcept;
    VESK_INLINE float next_random() noexcept;  // -1 up to 1

private:
    VESK_INLINE Pair oscillate(Pair phases) noexcept;
    VESK_INLINE Pair oscillate_at_random(float left_phase) noexcept;
};

VESK_INLINE float phase_after(float phase, float step) noexcept {
    const float sum = phase + step;
    return sum >= 1.0f ? sum - 1.0f : sum;
}

VESK_INLINE float Modulator::next_random() noexcept {
    std::uint32_t& s0 = random_state[0];
    std::uint32_t& s1 = random_state[1];
    const std::uint32_t t = s0 ^ (s0 << 10);
    s0 = s1;
    s1 = s1 ^ (s1 >> 10) ^ t ^ (t >> 13);
    // The top bits as the fraction of a float from 2 up to 4.
    return __builtin_bit_cast(float, (s1 >> 9) | 0x40000000U) - 3.0f;
}

VESK_INLINE Pair Modulator::oscillate_at_random(float left_phase) noexcept {
    if (left_phase < last_phase[0]) {  // wrapped since the last sample
        const float left = next_random();
        random_value = Pair{left, next_random()};
    }
    // The right channel equals the left one at 0 degrees, is a second value at 90 and the left one
    // negated at 180.
    const float held = random_value[0];
    const float w = magnitude(phase_offset - 0.25f) * 4.0f;
    const float c = phase_offset > 0.25f ? -held : held;
    return Pair{held, (1.0f - w) * random_value[1] + w * c};
}

VESK_INLINE Pair Modulator::oscillate(Pair f) noexcept {
    const auto saw_up = [](Pair p) { return p < 0.5f ? 2.0f * p : 2.0f * (p - 1.0f); };
    switch (waveform) {
        case waveform_mode::sine:
            return fast_sine_cycle(f);
        case waveform_mode::triangle:
            return triangle_of_phase(f);
        case waveform_mode::saw_up:
            return saw_up(f);
        case waveform_mode::saw_down:
            return -saw_up(f);
        case waveform_mode::square:
            return f < 0.5f ? both(1.0f) : both(-1.0f);
        case waveform_mode::random:
            return oscillate_at_random(f[0]);
    }
    return Pair{};
}

VESK_INLINE Pair Modulator::process(Pair detector) noexcept {
    const float p = phase;
    phase = phase_after(p, phase_increment);
    const Pair phases{p, phase_after(p, phase_offset)};
    const Pair swing = oscillate(phases);
    last_phase = phases;

    const Pair level = magnitude(detector);
    const Pair k =
        level > envelope ? both(envelope_attack_coefficient) : both(envelope_release_coefficient);
    envelope = (1.0f - k) * envelope + k * level;

    constexpr float swings_per_level = 10.0f;
    const Pair value = envelope * swings_per_level * envelope_mix + (1.0f - envelope_mix) * swing;
    smoothed = value * smoothing_coefficient + (1.0f - smoothing_coefficient) * smoothed;
    return smoothed;
}

}  // namespace orvane::blocks::vesk
