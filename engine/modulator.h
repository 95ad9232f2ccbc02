// Modulates the delay's read speed: an LFO, an envelope follower, a blend of the two and a 30 Hz
// smoother after it. Its output is control signal, not audio: 1 is the LFO's full scale.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/modes.h"

namespace orvane::blocks::vesk {

struct Modulator {
    using waveform_mode = kv7::orv::vesk::waveform_mode;

    float phase = 0.0f;     // of the left channel, 0 up to 1
    float phase_increment;  // per sample
    Pair last_phase{};      // the phases of the latest sample
    float sample_rate;      // Hz
    waveform_mode waveform = waveform_mode::sine;
    float frequency = 1.0f;  // Hz
    Pair smoothed{};         // the smoother's state, and the output
    float smoothing_coefficient;
    float smoothing_time = 0.005305165f;        // s: 1 / (2 * pi * 30)
    float phase_offset = 0.0f;                  // of the right channel, cycles ahead, 0 to 0.5
    std::array<std::uint32_t, 2> random_state;  // never both 0
    Pair random_value{};                        // held by "Random"
    Pair envelope{};
    float envelope_mix = 0.0f;           // 0: LFO only, 1: envelope only
    float envelope_attack_coefficient;   // of 8 ms
    float envelope_release_coefficient;  // of 222 ms

    explicit Modulator(float rate);  // seeded from the system's random source
    void set_frequency(float hz);
    void set_phase_offset(float degrees);
    void reset() noexcept;  // random_state goes on

    // The increment of a frequency in Hz, limited to half the rate.
    template <class T>
    VESK_INLINE T phase_increment_of(T hz) const noexcept {
        return min(hz, broadcast<T>(sample_rate * 0.5f)) / sample_rate;
    }
    template <class T>
    VESK_INLINE static T phase_offset_of(T degrees) noexcept {
        constexpr float cycles_per_degree = 0.0027777778f;
        return degrees * cycles_per_degree;
    }

    // The two recursive parts, one frame at a time. Each advances its state and gives this frame's
    // phase of the left channel, or the envelope of a level (an absolute value).
    VESK_INLINE float step_phase() noexcept;
    VESK_INLINE Pair step_envelope(Pair level) noexcept;
    // The phases of both channels. offset: the values of phase_offset.
    template <class Values>
    VESK_INLINE static void phases_of_both(const float* left, Values offset, std::size_t n,
                                           Block& phases) noexcept;
    // The output for n frames from what those two gave for them. offset: the values of
    // phase_offset; mix: those of envelope_mix.
    template <class Values>
    VESK_INLINE Block blend(const Block& phases, const Block& envelopes, Values offset, Values mix,
                            std::size_t n) noexcept;
    VESK_INLINE float next_random() noexcept;  // -1 up to 1

private:
    template <class Values>
    VESK_INLINE Block lfo(const Block& phases, Values offset, std::size_t n) noexcept;
    template <class Values>
    VESK_INLINE Block random_lfo(const Block& phases, Values offset, std::size_t n) noexcept;
};

template <class T>
VESK_INLINE T advance_phase(T phase, T step) noexcept {
    const T sum = phase + step;
    return sum >= 1.0f ? sum - 1.0f : sum;
}

VESK_INLINE float Modulator::next_random() noexcept {
    std::uint32_t& s0 = random_state[0];
    std::uint32_t& s1 = random_state[1];
    const std::uint32_t t = s0 ^ (s0 << 10);
    s0 = s1;
    s1 = s1 ^ (s1 >> 10) ^ t ^ (t >> 13);
    // The top 23 bits become the mantissa of a float from 2 up to 4.
    return __builtin_bit_cast(float, (s1 >> 9) | 0x40000000U) - 3.0f;
}

template <class Values>
VESK_INLINE Block Modulator::random_lfo(const Block& phases, Values offset,
                                        std::size_t n) noexcept {
    // The right channel is the left one at 0 degrees, a second random value at 90, the left one
    // negated at 180, and a linear blend in between.
    Block out;
    float last = last_phase[0];
    for (std::size_t i = 0; i < n; ++i) {
        const float p = phases[i][0];
        if (p < last) {  // wrapped since the last sample
            const float left = next_random();
            random_value = Pair{left, next_random()};
        }
        last = p;
        const float held = random_value[0];
        const float cycles = offset.template mono<float>(i);
        const float w = abs(cycles - 0.25f) * 4.0f;
        const float c = cycles > 0.25f ? -held : held;
        out[i] = Pair{held, (1.0f - w) * random_value[1] + w * c};
    }
    return out;
}

template <class Values>
VESK_INLINE Block Modulator::lfo(const Block& phases, Values offset, std::size_t n) noexcept {
    const auto shape = [&](auto formula) VESK_LAMBDA { return map_block(n, formula, phases); };
    const auto saw_up = []<class T>(T f)
                            VESK_LAMBDA { return f < 0.5f ? 2.0f * f : 2.0f * (f - 1.0f); };
    switch (waveform) {
        case waveform_mode::sine:
            return shape([](auto f) VESK_LAMBDA { return fast_sine_cycle(f); });
        case waveform_mode::triangle:
            return shape([](auto f) VESK_LAMBDA { return triangle_of_phase(f); });
        case waveform_mode::saw_up:
            return shape(saw_up);
        case waveform_mode::saw_down:
            return shape([&](auto f) VESK_LAMBDA { return -saw_up(f); });
        case waveform_mode::square:
            return shape([]<class T>(T f) VESK_LAMBDA {
                return f < 0.5f ? broadcast<T>(1.0f) : broadcast<T>(-1.0f);
            });
        case waveform_mode::random:
            return random_lfo(phases, offset, n);
    }
    return {};
}

VESK_INLINE float Modulator::step_phase() noexcept {
    const float present = phase;
    phase = advance_phase(phase, phase_increment);
    return present;
}

template <class Values>
VESK_INLINE void Modulator::phases_of_both(const float* left, Values offset, std::size_t n,
                                           Block& phases) noexcept {
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const auto l = load<Mono<T>>(left + i);
        phases.set(i, interleave(l, advance_phase(l, offset.template mono<Mono<T>>(i))));
    });
}

VESK_INLINE Pair Modulator::step_envelope(Pair level) noexcept {
    const Pair attack =
        (1.0f - envelope_attack_coefficient) * envelope + envelope_attack_coefficient * level;
    const Pair release =
        (1.0f - envelope_release_coefficient) * envelope + envelope_release_coefficient * level;
    envelope = level > envelope ? attack : release;
    return envelope;
}

template <class Values>
VESK_INLINE Block Modulator::blend(const Block& phases, const Block& envelopes, Values offset,
                                   Values mix, std::size_t n) noexcept {
    const Block oscillator = lfo(phases, offset, n);
    last_phase = phases[n - 1];

    constexpr float envelope_gain = 10.0f;  // a level of 0.1 reaches the LFO's full scale
    const Block value = map_block(
        n,
        [&](auto e, auto o, auto m) VESK_LAMBDA { return e * envelope_gain * m + (1.0f - m) * o; },
        envelopes, oscillator, mix);
    Block out;
    Pair state = smoothed;
    const Pair k = broadcast<Pair>(smoothing_coefficient);
    for (std::size_t i = 0; i < n; ++i) {
        state = value[i] * k + (1.0f - k) * state;
        out[i] = state;
    }
    smoothed = state;
    return out;
}

}  // namespace orvane::blocks::vesk
