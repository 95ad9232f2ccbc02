// Moves the delay's read speed: an oscillator, an envelope follower, a blend of the two and a
// 30 Hz smoother behind it. It touches no audio; its output counts in full swings.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/modes.h"
#include "engine/run.h"

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

    // detector is what the envelope follows.
    VESK_INLINE Run process(const Run& detector, std::size_t n) noexcept;
    VESK_INLINE Pair process(Pair detector) noexcept { return process(run_of_one(detector), 1)[0]; }
    VESK_INLINE float next_random() noexcept;  // -1 up to 1

private:
    VESK_INLINE Run oscillate(const Run& phases, std::size_t n) noexcept;
    VESK_INLINE Run oscillate_at_random(const Run& phases, std::size_t n) noexcept;
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

VESK_INLINE Run Modulator::oscillate_at_random(const Run& phases, std::size_t n) noexcept {
    // The right channel equals the left one at 0 degrees, is a second value at 90 and the left one
    // negated at 180.
    const float w = magnitude(phase_offset - 0.25f) * 4.0f;
    Run swing;
    float last = last_phase[0];
    for (std::size_t i = 0; i < n; ++i) {
        const float p = phases[i][0];
        if (p < last) {  // wrapped since the last sample
            const float left = next_random();
            random_value = Pair{left, next_random()};
        }
        last = p;
        const float held = random_value[0];
        const float c = phase_offset > 0.25f ? -held : held;
        swing[i] = Pair{held, (1.0f - w) * random_value[1] + w * c};
    }
    swing.finish(n);
    return swing;
}

VESK_INLINE Run Modulator::oscillate(const Run& phases, std::size_t n) noexcept {
    const auto shape = [&](auto formula) { return map_run(n, formula, phases); };
    const auto saw_up = [](Oct f) { return f < 0.5f ? 2.0f * f : 2.0f * (f - 1.0f); };
    switch (waveform) {
        case waveform_mode::sine:
            return shape([](Oct f) { return fast_sine_cycle(f); });
        case waveform_mode::triangle:
            return shape([](Oct f) { return triangle_of_phase(f); });
        case waveform_mode::saw_up:
            return shape(saw_up);
        case waveform_mode::saw_down:
            return shape([&](Oct f) { return -saw_up(f); });
        case waveform_mode::square:
            return shape([](Oct f) { return f < 0.5f ? all<Oct>(1.0f) : all<Oct>(-1.0f); });
        case waveform_mode::random:
            return oscillate_at_random(phases, n);
    }
    return {};
}

VESK_INLINE Run Modulator::process(const Run& detector, std::size_t n) noexcept {
    const Run level = map_run(
        n, [](Oct e) { return magnitude(e); }, detector);
    Run phases;
    Run followed;
    const Pair attack = both(envelope_attack_coefficient);
    const Pair release = both(envelope_release_coefficient);
    for (std::size_t i = 0; i < n; ++i) {
        phases[i] = Pair{phase, phase_after(phase, phase_offset)};
        phase = phase_after(phase, phase_increment);
        const Pair up = (1.0f - attack) * envelope + attack * level[i];
        const Pair down = (1.0f - release) * envelope + release * level[i];
        envelope = level[i] > envelope ? up : down;
        followed[i] = envelope;
    }
    phases.finish(n);
    followed.finish(n);
    const Run swing = oscillate(phases, n);
    last_phase = phases[n - 1];

    constexpr float swings_per_level = 10.0f;
    const Run value = map_run(
        n,
        [&](Oct f, Oct s) {
            return f * swings_per_level * envelope_mix + (1.0f - envelope_mix) * s;
        },
        followed, swing);
    Run out;
    for (std::size_t i = 0; i < n; ++i) {
        smoothed = value[i] * smoothing_coefficient + (1.0f - smoothing_coefficient) * smoothed;
        out[i] = smoothed;
    }
    out.finish(n);
    return out;
}

}  // namespace orvane::blocks::vesk
