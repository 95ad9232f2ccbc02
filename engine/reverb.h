// The plate: predelay, input filter, four diffusers, and a tank of two crossed halves.
//
// After Dattorro, "Effect Design 1", J. Audio Eng. Soc. 45(9), 1997. Unlike the paper each ring
// holds a Frame: two copies of the network, the left lane and the right lane, share the lengths and
// the two oscillators and meet nowhere. The modulated stages read between samples through a
// first-order all-pass, and the filters are matched one-poles that keep a set gain at the band's
// top. All lengths are samples at 29761 Hz, scaled to the rate.
#pragma once

#include <array>
#include <cstdint>

#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/run.h"

namespace orvane::blocks::vesk {

using FrameRing = CircularBuffer<Pair>;

struct AllPass {
    FrameRing ring;
    Pair coefficient;
    Pair last_read{};

    VESK_INLINE Pair process(Pair x) noexcept;
};

struct ModulatedAllPass {
    FrameRing ring;
    Pair coefficient;
    Pair interpolator_state{};

    VESK_INLINE Pair process(Pair x, float delay) noexcept;  // delay in samples
};

struct MatchedLowpass {
    Pair coefficient{};
    Pair low_gain = both(1.0f);
    Pair high_gain{};

    VESK_INLINE Pair process(Pair x, Pair& state) const noexcept;
};

MatchedLowpass design_matched_lowpass(Pair cutoff, Pair rate);  // both in Hz

struct Reverb {
    // The two tap sums; each output channel uses one of them, on its own lane.
    struct Sums {
        Pair a;
        Pair b;
    };

    float sample_rate;            // Hz
    float length_scale;           // samples for a sample at 29761 Hz
    float predelay_time = 0.01f;  // s
    std::uint64_t predelay_samples = 0;
    FrameRing predelay;
    Pair bandwidth_cutoff = both(14880.5f);  // Hz
    MatchedLowpass bandwidth_filter;
    Pair bandwidth_state{};
    std::array<AllPass, 4> diffusers;  // in signal order
    Pair lfo_phase{};                  // 0 up to 1; of tank half 0 and of half 1
    Pair lfo_increment{};              // per sample
    std::array<ModulatedAllPass, 2> tank_allpass_in;
    std::array<AllPass, 2> tank_allpass_out;
    std::array<FrameRing, 2> tank_delay_in;   // behind tank_allpass_in
    std::array<FrameRing, 2> tank_delay_out;  // behind tank_allpass_out
    Pair damping_cutoff = bandwidth_cutoff;   // Hz
    MatchedLowpass damping_filter;            // of both halves
    std::array<Pair, 2> damping_state{};
    Pair decay = both(0.5f);  // tank gain, both sides equal
    std::array<std::uint64_t, 14> output_taps{};

    explicit Reverb(float rate);  // throws std::bad_alloc
    void redesign_bandwidth();
    void redesign_damping();
    void clear() noexcept;  // contents and states; coefficients and decay stay

    // Of each frame, (sum a of the left lane, sum b of the right one): what the engine hears.
    VESK_INLINE Run process(const Run& x, std::size_t n) noexcept;
    VESK_INLINE Sums process(Pair x) noexcept { return step_tank(step_input(x)); }

private:
    VESK_INLINE Pair step_input(Pair x) noexcept;  // to the tank's input
    VESK_INLINE Sums step_tank(Pair y) noexcept;
    VESK_INLINE Sums sum_taps() const noexcept;
};

VESK_INLINE Pair AllPass::process(Pair x) noexcept {
    const std::uint64_t next = ring.next_head();
    const Pair r = ring.storage[next];
    last_read = r;
    const Pair v = x - r * coefficient;
    ring.storage[next] = v;
    ring.head = next;
    return r + v * coefficient;
}

VESK_INLINE Pair ModulatedAllPass::process(Pair x, float delay) noexcept {
    const float e = delay - 1.0f;
    const auto last = static_cast<float>(static_cast<std::int64_t>(ring.size - 2));
    const float p = last >= e ? larger(e, 0.0f) : last;
    const std::int32_t i = whole(p);
    const float t = p - floats(i);
    const float a = (1.0f - t) / (1.0f + t);
    const auto k = static_cast<std::uint64_t>(i);
    const Pair y = (ring.at(k) - interpolator_state) * a + ring.at(k + 1);
    interpolator_state = y;
    const Pair v = x - y * coefficient;
    ring.push(v);
    return v * coefficient + y;
}

VESK_INLINE Pair MatchedLowpass::process(Pair x, Pair& state) const noexcept {
    const Pair gain = coefficient / (coefficient + 2.0f);
    const Pair v = (x - state) * gain;
    const Pair low = state + v;
    const Pair high = x - low;
    state = state + (v + v);
    return high_gain * high + low_gain * low;
}

VESK_INLINE Reverb::Sums Reverb::sum_taps() const noexcept {
    const auto& taps = output_taps;
    const auto& [in0, in1] = tank_delay_in;
    const auto& [out0, out1] = tank_delay_out;
    const FrameRing& mid0 = tank_allpass_out[0].ring;
    const FrameRing& mid1 = tank_allpass_out[1].ring;
    const Pair a = in1.at(taps[0]) + in1.at(taps[1]) - mid1.at(taps[2]) + out1.at(taps[3]) -
                   in0.at(taps[4]) - mid0.at(taps[5]) - out0.at(taps[6]);
    const Pair b = in0.at(taps[7]) + in0.at(taps[8]) - mid0.at(taps[9]) + out0.at(taps[10]) -
                   in1.at(taps[11]) - mid1.at(taps[12]) - out1.at(taps[13]);
    constexpr float tap_gain = 0.6f;
    return {tap_gain * a, tap_gain * b};
}

VESK_INLINE Pair Reverb::step_input(Pair x) noexcept {
    predelay.push(x);
    Pair y = bandwidth_filter.process(predelay.at(predelay_samples), bandwidth_state);
    for (AllPass& diffuser : diffusers) y = diffuser.process(y);
    return y;
}

// The stages in front of the tank feed forward only, so each takes the whole run in turn.
VESK_INLINE Run Reverb::process(const Run& x, std::size_t n) noexcept {
    Run y;
    for (std::size_t i = 0; i < n; ++i) {
        predelay.push(x[i]);
        y[i] = bandwidth_filter.process(predelay.at(predelay_samples), bandwidth_state);
    }
    for (AllPass& diffuser : diffusers)
        for (std::size_t i = 0; i < n; ++i) y[i] = diffuser.process(y[i]);
    for (std::size_t i = 0; i < n; ++i) {
        const Sums sums = step_tank(y[i]);
        y[i] = Pair{sums.a[0], sums.b[1]};
    }
    y.finish(n);
    return y;
}

VESK_INLINE Reverb::Sums Reverb::step_tank(Pair y) noexcept {
    // Each half takes the other's end, read before anything is pushed.
    const Pair t1 = y + decay * tank_delay_out[0].oldest();
    const Pair t0 = y + decay * tank_delay_out[1].oldest();

    const Pair sway = fast_sine_cycle(lfo_phase);
    const Pair moved = lfo_phase + lfo_increment;
    lfo_phase = moved >= 1.0f ? moved - 1.0f : moved;
    constexpr float excursion = 8.0f;  // samples at 29761 Hz, either way
    const Pair delays = ((sway + 1.0f) * excursion + Pair{672.0f, 908.0f}) * length_scale;

    const Pair u0 = tank_allpass_in[0].process(t0, delays[0]);
    const Pair u1 = tank_allpass_in[1].process(t1, delays[1]);
    const Pair e1 = tank_delay_in[1].oldest();
    const Pair e0 = tank_delay_in[0].oldest();
    tank_delay_in[0].push(u0);
    tank_delay_in[1].push(u1);
    const Pair f0 = damping_filter.process(e0, damping_state[0]);
    const Pair f1 = damping_filter.process(e1, damping_state[1]);
    tank_delay_out[0].push(tank_allpass_out[0].process(decay * f0));
    tank_delay_out[1].push(tank_allpass_out[1].process(decay * f1));
    return sum_taps();
}

}  // namespace orvane::blocks::vesk
