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

// n frames from a place of the ring on, each one place below the last: what a fixed distance meets
// while the head moves.
VESK_INLINE Run read_down(const FrameRing& ring, std::uint64_t place, std::size_t n) noexcept;

struct AllPass {
    FrameRing ring;
    Pair coefficient;
    Pair last_read{};

    VESK_INLINE void process(Run& x,
                             std::size_t n) noexcept;  // in place; n is at most the ring's size
};

struct ModulatedAllPass {
    FrameRing ring;
    Pair coefficient;
    Pair interpolator_state{};

    // y is what the interpolator has read for each frame.
    VESK_INLINE Run process(const Run& x, const Run& y, std::size_t n) noexcept;
};

struct MatchedLowpass {
    Pair coefficient{};
    Pair low_gain = both(1.0f);
    Pair high_gain{};

    // One step, for one or two signals at once; gain is step_gain().
    template <class T>
    VESK_INLINE T process(T x, T& state, T gain, T high, T low) const noexcept;
    VESK_INLINE Pair step_gain() const noexcept { return coefficient / (coefficient + 2.0f); }
    Pair process(Pair x, Pair& state) const noexcept {
        return process(x, state, step_gain(), high_gain, low_gain);
    }
};

MatchedLowpass design_matched_lowpass(Pair cutoff, Pair rate);  // both in Hz

struct Reverb {
    // The two tap sums of a run, on both lanes. The engine hears the left lane of a and the right
    // one of b.
    struct Sums {
        Run a;
        Run b;
    };
    struct FrameSums {
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

    // The oscillators' phases of the next frame.
    VESK_INLINE Pair phases_after(Pair phases) const noexcept;
    // (a of the left lane, b of the right lane) of each frame, with the oscillators' phases.
    VESK_INLINE Run process(const Run& x, const Run& phases, std::size_t n) noexcept;
    VESK_INLINE FrameSums process(Pair x) noexcept {
        const Run phases = run_of_one(lfo_phase);
        lfo_phase = phases_after(lfo_phase);
        const Sums sums = process_piece(run_of_one(x), phases, 1);
        return {sums.a[0], sums.b[0]};
    }

private:
    // What the recursive parts give for a piece; none of them waits for the piece's own input but
    // the first.
    struct Recursions {
        Run band_limited;
        std::array<Run, 2> interpolated;  // by tank_allpass_in
        std::array<Run, 2> damped;        // the ends of tank_delay_in
    };

    VESK_INLINE Sums process_piece(const Run& x, const Run& phases, std::size_t n) noexcept;
    // Delays of tank_allpass_in in samples, half by half.
    VESK_INLINE Run sway(const Run& phases, std::size_t n) const noexcept;
    VESK_INLINE Recursions recur(const Run& predelayed, const Run& phases, std::size_t n) noexcept;
    VESK_INLINE Sums sum_taps(std::size_t n) const noexcept;

    // Frames that may go together: no stage reads what the same piece pushes, and no tap what it
    // overwrites. Below longest_run at low rates only.
    std::size_t longest_piece_ = 1;
    std::size_t find_longest_piece() const;
};

VESK_INLINE Run read_down(const FrameRing& ring, std::uint64_t place, std::size_t n) noexcept {
    const Pair* const frames = ring.storage.get();
    Run out;
    if (place + 1 >= longest_run) [[likely]] {
        for (std::size_t i = 0; i < n; i += pairs_in_oct) {
            Oct four;
            __builtin_memcpy(&four, frames + place - i - (pairs_in_oct - 1), sizeof four);
            out.set_four(i, reversed<sizeof(Pair)>(four));
        }
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = frames[place];
            place = (place == 0 ? ring.size : place) - 1;
        }
        out.finish(n);
    }
    return out;
}

// What at(distance) met after each of the last n pushes.
VESK_INLINE Run read_behind(const FrameRing& ring, std::uint64_t distance, std::size_t n) noexcept {
    return read_down(ring, ring.index(distance + n - 1), n);
}

// What the next n pushes will overwrite.
VESK_INLINE Run read_oldest(const FrameRing& ring, std::size_t n) noexcept {
    return read_down(ring, ring.next_head(), n);
}

VESK_INLINE void AllPass::process(Run& x, std::size_t n) noexcept {
    const Oct c = pairs(coefficient);
    const Run r = read_oldest(ring, n);
    last_read = r[n - 1];
    Run v;
    for (std::size_t i = 0; i < n; i += pairs_in_oct) {
        const Oct pushed = x.four(i) - r.four(i) * c;
        v.set_four(i, pushed);
        x.set_four(i, r.four(i) + pushed * c);
    }
    ring.push(v.frames, n);
}

VESK_INLINE Run ModulatedAllPass::process(const Run& x, const Run& y, std::size_t n) noexcept {
    const Oct c = pairs(coefficient);
    Run v, out;
    for (std::size_t i = 0; i < n; i += pairs_in_oct) {
        const Oct pushed = x.four(i) - y.four(i) * c;
        v.set_four(i, pushed);
        out.set_four(i, pushed * c + y.four(i));
    }
    ring.push(v.frames, n);
    return out;
}

template <class T>
VESK_INLINE T MatchedLowpass::process(T x, T& state, T gain, T high, T low) const noexcept {
    const T v = (x - state) * gain;
    const T passed = state + v;
    const T stopped = x - passed;
    state = state + (v + v);
    return high * stopped + low * passed;
}

VESK_INLINE Pair Reverb::phases_after(Pair phases) const noexcept {
    const Pair moved = phases + lfo_increment;
    return moved >= 1.0f ? moved - 1.0f : moved;
}

VESK_INLINE Run Reverb::sway(const Run& phases, std::size_t n) const noexcept {
    constexpr float excursion = 8.0f;  // samples at 29761 Hz, either way
    return map_run(
        n,
        [this](Oct p) VESK_LAMBDA {
            return ((fast_sine_cycle(p) + 1.0f) * excursion + pairs(672.0f, 908.0f)) * length_scale;
        },
        phases);
}

VESK_INLINE Reverb::Recursions Reverb::recur(const Run& predelayed, const Run& phases,
                                             std::size_t n) noexcept {
    ModulatedAllPass& m0 = tank_allpass_in[0];
    ModulatedAllPass& m1 = tank_allpass_in[1];
    const Run old0 = read_oldest(tank_delay_in[0], n);
    const Run old1 = read_oldest(tank_delay_in[1], n);

    // Where between its samples each interpolator reads, and with which weight.
    const auto last = [](const FrameRing& ring) VESK_LAMBDA {
        return static_cast<float>(static_cast<std::int64_t>(ring.size - 2));
    };
    const Oct most = pairs(last(m0.ring), last(m1.ring));
    const Run position = map_run(
        n,
        [=](Oct d) VESK_LAMBDA {
            const Oct e = d - 1.0f;
            return most >= e ? larger(e, Oct{}) : most;
        },
        sway(phases, n));
    const Run weight = map_run(
        n,
        [](Oct p) VESK_LAMBDA {
            const Oct t = p - floats(whole(p));
            return (1.0f - t) / (1.0f + t);
        },
        position);

    const auto twice = [](Pair x) VESK_LAMBDA { return quad(x, x); };
    const Pair band_gain = bandwidth_filter.step_gain();
    const Quad damp_gain = twice(damping_filter.step_gain());
    const Quad damp_high = twice(damping_filter.high_gain);
    const Quad damp_low = twice(damping_filter.low_gain);
    Pair band = bandwidth_state;
    Quad damp = quad(damping_state[0], damping_state[1]);
    Quad between = quad(m0.interpolator_state, m1.interpolator_state);
    const auto two_at = [](const FrameRing& ring, std::uint64_t place) VESK_LAMBDA {
        Quad two;
        if (place + 2 <= ring.size) [[likely]]
            __builtin_memcpy(&two, ring.storage.get() + place, sizeof two);
        else
            two = quad(ring.storage[place], ring.storage[0]);
        return two;
    };
    Recursions out;
    // Three chains side by side, each of which would wait for itself alone.
    for (std::size_t i = 0; i < n; ++i) {
        out.band_limited[i] = bandwidth_filter.process(
            predelayed[i], band, band_gain, bandwidth_filter.high_gain, bandwidth_filter.low_gain);

        const Quad damped =
            damping_filter.process(quad(old0[i], old1[i]), damp, damp_gain, damp_high, damp_low);
        out.damped[0][i] = low_half(damped);
        out.damped[1][i] = high_half(damped);

        // The piece's own pushes are still to come: the distance is that much shorter.
        const IntPair k = whole(position[i]) - static_cast<std::int32_t>(i);
        const Quad p0 = two_at(m0.ring, m0.ring.index(static_cast<std::uint64_t>(k[0])));
        const Quad p1 = two_at(m1.ring, m1.ring.index(static_cast<std::uint64_t>(k[1])));
        const Pair w = weight[i];
        const Quad a = __builtin_shufflevector(w, w, 0, 0, 1, 1);
        between =
            (quad(low_half(p0), low_half(p1)) - between) * a + quad(high_half(p0), high_half(p1));
        out.interpolated[0][i] = low_half(between);
        out.interpolated[1][i] = high_half(between);
    }
    bandwidth_state = band;
    damping_state = {low_half(damp), high_half(damp)};
    m0.interpolator_state = low_half(between);
    m1.interpolator_state = high_half(between);
    out.band_limited.finish(n);
    for (Run* run : {&out.damped[0], &out.damped[1], &out.interpolated[0], &out.interpolated[1]})
        run->finish(n);
    return out;
}

VESK_INLINE Reverb::Sums Reverb::sum_taps(std::size_t n) const noexcept {
    const auto& [in0, in1] = tank_delay_in;
    const auto& [out0, out1] = tank_delay_out;
    const FrameRing& mid0 = tank_allpass_out[0].ring;
    const FrameRing& mid1 = tank_allpass_out[1].ring;
    const auto tap = [&](const FrameRing& ring, std::size_t i)
                         VESK_LAMBDA { return read_behind(ring, output_taps[i], n); };
    constexpr float tap_gain = 0.6f;
    const auto sum = [](Oct p, Oct q, Oct r, Oct s, Oct t, Oct u, Oct v)
                         VESK_LAMBDA { return tap_gain * (p + q - r + s - t - u - v); };
    return {map_run(n, sum, tap(in1, 0), tap(in1, 1), tap(mid1, 2), tap(out1, 3), tap(in0, 4),
                    tap(mid0, 5), tap(out0, 6)),
            map_run(n, sum, tap(in0, 7), tap(in0, 8), tap(mid0, 9), tap(out0, 10), tap(in1, 11),
                    tap(mid1, 12), tap(out1, 13))};
}

VESK_INLINE Reverb::Sums Reverb::process_piece(const Run& x, const Run& phases,
                                               std::size_t n) noexcept {
    predelay.push(x.frames, n);
    Recursions r = recur(read_behind(predelay, predelay_samples, n), phases, n);
    Run& y = r.band_limited;
    for (AllPass& diffuser : diffusers) diffuser.process(y, n);

    // Each half takes the other's end, read before anything is pushed.
    const Oct gain = pairs(decay);
    const auto fed = [=](Oct in, Oct end) VESK_LAMBDA { return in + gain * end; };
    const Run t1 = map_run(n, fed, y, read_oldest(tank_delay_out[0], n));
    const Run t0 = map_run(n, fed, y, read_oldest(tank_delay_out[1], n));
    const auto half = [&](std::size_t h, const Run& t) VESK_LAMBDA {
        const Run u = tank_allpass_in[h].process(t, r.interpolated[h], n);
        tank_delay_in[h].push(u.frames, n);
        Run out = map_run(
            n, [=](Oct f) VESK_LAMBDA { return gain * f; }, r.damped[h]);
        tank_allpass_out[h].process(out, n);
        tank_delay_out[h].push(out.frames, n);
    };
    half(0, t0);
    half(1, t1);
    return sum_taps(n);
}

VESK_INLINE Run Reverb::process(const Run& x, const Run& phases, std::size_t n) noexcept {
    const auto heard = [](Oct a, Oct b) VESK_LAMBDA { return left_and_right(a, b); };
    if (n <= longest_piece_) [[likely]] {
        const Sums sums = process_piece(x, phases, n);
        return map_run(n, heard, sums.a, sums.b);
    }
    Run out;
    for (std::size_t first = 0; first < n; first += longest_piece_) {
        const std::size_t count = smaller(longest_piece_, n - first);
        const Sums sums = process_piece(x.slice(first, count), phases.slice(first, count), count);
        for (std::size_t i = 0; i < count; ++i) out[first + i] = Pair{sums.a[i][0], sums.b[i][1]};
    }
    out.finish(n);
    return out;
}

}  // namespace orvane::blocks::vesk
