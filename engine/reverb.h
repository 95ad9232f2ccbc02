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

#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/prefetch.h"

namespace orvane::blocks::vesk {

using FrameRing = CircularBuffer<Pair>;

// The two kinds of diffuser. A step takes one frame's lanes, or those of four frames, to their
// place on the ring, where the oldest ones still stand.
struct AllPass {
    FrameRing ring;
    Pair coefficient;
    Pair last_read{};

    template <class T>
    VESK_INLINE T step(T x, Pair* place) const noexcept {
        const T c = broadcast<T>(coefficient);
        const T oldest = load<T>(place);
        const T pushed = x - oldest * c;
        store(place, pushed);
        return oldest + pushed * c;
    }
};

struct ModulatedAllPass {
    FrameRing ring;
    Pair coefficient;
    Pair interpolator_state{};

    // read is what the interpolator has read.
    template <class T>
    VESK_INLINE T step(T x, T read, Pair* place) const noexcept {
        const T c = broadcast<T>(coefficient);
        const T pushed = x - read * c;
        store(place, pushed);
        return pushed * c + read;
    }
};

struct MatchedLowpass {
    Pair coefficient{};
    Pair low_gain = broadcast<Pair>(1.0f);
    Pair high_gain{};

    // What the filter lets pass, one step, for one or two signals at once; gain is step_gain().
    template <class T>
    VESK_INLINE static T pass(T x, T& state, T gain) noexcept;
    VESK_INLINE Pair step_gain() const noexcept { return coefficient / (coefficient + 2.0f); }
    // Its output for x and what passed of it.
    template <class T>
    VESK_INLINE T shelve(T x, T passed) const noexcept {
        return broadcast<T>(high_gain) * (x - passed) + broadcast<T>(low_gain) * passed;
    }
};

MatchedLowpass design_matched_lowpass(Pair cutoff, Pair rate);  // both in Hz

struct Reverb {
    static constexpr std::size_t tap_count = 14;  // seven for either sum

    // The two tap sums on both lanes, of one frame or of four. The engine hears the left lane of a
    // and the right one of b.
    template <class T>
    struct Sums {
        T a;
        T b;
    };

    float sample_rate;            // Hz
    float length_scale;           // samples for a sample at 29761 Hz
    float predelay_time = 0.01f;  // s
    std::uint64_t predelay_samples = 0;
    FrameRing predelay;
    Pair bandwidth_cutoff = broadcast<Pair>(14880.5f);  // Hz
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
    Pair decay = broadcast<Pair>(0.5f);  // tank gain, both sides equal
    std::array<std::uint64_t, tap_count> output_taps{};

    explicit Reverb(float rate);  // throws std::bad_alloc
    void redesign_bandwidth();
    void redesign_damping();
    void clear() noexcept;  // contents and states; coefficients and decay stay

    // Asks for what the next n frames meet.
    VESK_INLINE void prefetch_block(std::size_t n) const noexcept;
    // The oscillators' phases of the next frame.
    VESK_INLINE Pair phases_after(Pair phases) const noexcept;
    // (a of the left lane, b of the right lane) of each frame, with the oscillators' phases.
    VESK_INLINE Block process(const Block& x, const Block& phases, std::size_t n) noexcept;
    VESK_INLINE Sums<Pair> process(Pair x) noexcept {
        const Block phases = block_of_one(lfo_phase);
        lfo_phase = phases_after(lfo_phase);
        pass(block_of_one(x), phases, 1);
        return sum_taps<Pair>(taps(), 0);
    }

private:
    // From here on a piece stands in the order of the rings, the newest frame first: what it meets
    // of a ring is one stretch of memory.
    //
    // What the recursive parts give for a piece; none of them waits for the piece's own input but
    // the first.
    struct Recursions {
        Block band_passed;                  // of the predelayed input, by bandwidth_filter
        std::array<Block, 2> damp_passed;   // of the ends of tank_delay_in, by damping_filter
        std::array<Block, 2> interpolated;  // by tank_allpass_in
    };
    using Taps = std::array<const Pair*, tap_count>;
    using TappedRings = std::array<const FrameRing*, tap_count>;

    VESK_INLINE void pass(const Block& x, const Block& phases, std::size_t n) noexcept;
    // Delays of tank_allpass_in in samples, half by half and in the order of the phases.
    VESK_INLINE Block sway(const Block& phases, std::size_t n) const noexcept;
    VESK_INLINE Recursions recur(const Pair* predelayed, const Block& phases,
                                 std::size_t n) noexcept;
    VESK_INLINE void pass_network(const Pair* predelayed, const Recursions& recursions,
                                  std::size_t n) noexcept;
    VESK_INLINE TappedRings tapped_rings() const noexcept;
    // Where the output taps stand for the newest frame, and what they sum to i frames before it.
    VESK_INLINE Taps taps() const noexcept;
    template <class T>
    VESK_INLINE static Sums<T> sum_taps(const Taps& taps, std::size_t i) noexcept;

    // Frames that may go together: no stage reads what the same piece pushes, and no tap what it
    // overwrites. Below max_block at low rates only.
    std::size_t longest_piece_ = 1;
    std::size_t find_longest_piece() const;
};

template <class T>
VESK_INLINE T MatchedLowpass::pass(T x, T& state, T gain) noexcept {
    const T v = (x - state) * gain;
    const T passed = state + v;
    state = state + (v + v);
    return passed;
}

VESK_INLINE Pair Reverb::phases_after(Pair phases) const noexcept {
    const Pair moved = phases + lfo_increment;
    return moved >= 1.0f ? moved - 1.0f : moved;
}

VESK_INLINE Block Reverb::sway(const Block& phases, std::size_t n) const noexcept {
    return map_block(
        n,
        [this]<class T>(T p) VESK_LAMBDA {
            constexpr float excursion = 8.0f;  // samples at 29761 Hz, either way
            const T lengths = broadcast<T>(672.0f, 908.0f);
            return ((fast_sine_cycle(p) + 1.0f) * excursion + lengths) * length_scale;
        },
        phases);
}

VESK_INLINE Reverb::Recursions Reverb::recur(const Pair* predelayed, const Block& phases,
                                             std::size_t n) noexcept {
    ModulatedAllPass& m0 = tank_allpass_in[0];
    ModulatedAllPass& m1 = tank_allpass_in[1];
    const Pair* const end0 = tank_delay_in[0].write_pointer(n);
    const Pair* const end1 = tank_delay_in[1].write_pointer(n);

    // Where between two samples each interpolator reads: their places, and the weight between them.
    const auto whole_number = [](std::uint64_t x)
                                  VESK_LAMBDA { return static_cast<std::int32_t>(x); };
    const IntPair size{whole_number(m0.ring.size), whole_number(m1.ring.size)};
    const IntPair head{whole_number(m0.ring.head), whole_number(m1.ring.head)};
    const Pair most = to_float(size - 2);
    const Block delays = sway(phases, n);
    Block weight;
    IntPair place[max_block];
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T e = delays.at<T>(i) - 1.0f;
        const T position = broadcast<T>(most) >= e ? max(e, T{}) : broadcast<T>(most);
        const Integers<T> whole_part = to_int(position);
        const T t = position - to_float(whole_part);
        weight.set(i, (1.0f - t) / (1.0f + t));
        // The piece's own pushes are still to come: the distance is that much shorter.
        const Integers<T> at = whole_part + broadcast<T>(head) - frame_indices<T>(i);
        store(place + i, at >= broadcast<T>(size) ? at - broadcast<T>(size) : at);
    });

    const Pair band_gain = bandwidth_filter.step_gain();
    const Quad damp_gain = combine(damping_filter.step_gain(), damping_filter.step_gain());
    Pair band = bandwidth_state;
    Quad damp = combine(damping_state[0], damping_state[1]);
    Quad between = combine(m0.interpolator_state, m1.interpolator_state);
    Recursions out;
    // Three chains side by side, each of which would wait for itself alone.
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t to = n - 1 - i;
        out.band_passed[to] = MatchedLowpass::pass(predelayed[to], band, band_gain);

        const Quad damped = MatchedLowpass::pass(combine(end0[to], end1[to]), damp, damp_gain);
        out.damp_passed[0][to] = lower_half(damped);
        out.damp_passed[1][to] = upper_half(damped);

        const Quad p0 = load<Quad>(m0.ring.storage.get() + place[i][0]);
        const Quad p1 = load<Quad>(m1.ring.storage.get() + place[i][1]);
        const Pair w = weight[i];
        const Quad a = __builtin_shufflevector(w, w, 0, 0, 1, 1);
        between = (combine(lower_half(p0), lower_half(p1)) - between) * a +
                  combine(upper_half(p0), upper_half(p1));
        out.interpolated[0][to] = lower_half(between);
        out.interpolated[1][to] = upper_half(between);
    }
    bandwidth_state = band;
    damping_state = {lower_half(damp), upper_half(damp)};
    m0.interpolator_state = lower_half(between);
    m1.interpolator_state = upper_half(between);
    return out;
}

VESK_INLINE void Reverb::pass_network(const Pair* predelayed, const Recursions& recursions,
                                      std::size_t n) noexcept {
    Pair* const diffused[] = {
        diffusers[0].ring.write_pointer(n), diffusers[1].ring.write_pointer(n),
        diffusers[2].ring.write_pointer(n), diffusers[3].ring.write_pointer(n)};
    Pair* const in[] = {tank_allpass_in[0].ring.write_pointer(n),
                        tank_allpass_in[1].ring.write_pointer(n)};
    Pair* const delay_in[] = {tank_delay_in[0].write_pointer(n), tank_delay_in[1].write_pointer(n)};
    Pair* const out[] = {tank_allpass_out[0].ring.write_pointer(n),
                         tank_allpass_out[1].ring.write_pointer(n)};
    Pair* const delay_out[] = {tank_delay_out[0].write_pointer(n),
                               tank_delay_out[1].write_pointer(n)};
    for (std::size_t k = 0; k < diffusers.size(); ++k) diffusers[k].last_read = *diffused[k];
    for (std::size_t h = 0; h < 2; ++h) tank_allpass_out[h].last_read = *out[h];

    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        T y = bandwidth_filter.shelve(load<T>(predelayed + i), recursions.band_passed.at<T>(i));
        y = diffusers[0].step(y, diffused[0] + i);
        y = diffusers[1].step(y, diffused[1] + i);
        y = diffusers[2].step(y, diffused[2] + i);
        y = diffusers[3].step(y, diffused[3] + i);
        // Each half takes the other's end, read before anything is pushed.
        const T gain = broadcast<T>(decay);
        const T into1 = y + gain * load<T>(delay_out[0] + i);
        const T into0 = y + gain * load<T>(delay_out[1] + i);
        const auto half = [&](std::size_t h, T into) VESK_LAMBDA {
            const T read = recursions.interpolated[h].at<T>(i);
            const T end = load<T>(delay_in[h] + i);
            store(delay_in[h] + i, tank_allpass_in[h].step(into, read, in[h] + i));
            const T damped = damping_filter.shelve(end, recursions.damp_passed[h].at<T>(i));
            store(delay_out[h] + i, tank_allpass_out[h].step(gain * damped, out[h] + i));
        };
        half(0, into0);
        half(1, into1);
    });

    for (AllPass& stage : diffusers) stage.ring.advance(n);
    for (std::size_t h = 0; h < 2; ++h) {
        tank_allpass_in[h].ring.advance(n);
        tank_delay_in[h].advance(n);
        tank_allpass_out[h].ring.advance(n);
        tank_delay_out[h].advance(n);
    }
}

VESK_INLINE Reverb::TappedRings Reverb::tapped_rings() const noexcept {
    const auto& [in0, in1] = tank_delay_in;
    const auto& [out0, out1] = tank_delay_out;
    const FrameRing& mid0 = tank_allpass_out[0].ring;
    const FrameRing& mid1 = tank_allpass_out[1].ring;
    return {&in1, &in1, &mid1, &out1, &in0, &mid0, &out0,
            &in0, &in0, &mid0, &out0, &in1, &mid1, &out1};
}

VESK_INLINE Reverb::Taps Reverb::taps() const noexcept {
    const auto rings = tapped_rings();
    Taps places;
    for (std::size_t t = 0; t < places.size(); ++t)
        places[t] = rings[t]->pointer_at(output_taps[t]);
    return places;
}

template <class T>
VESK_INLINE Reverb::Sums<T> Reverb::sum_taps(const Taps& taps, std::size_t i) noexcept {
    const auto sum = [&](std::size_t t) VESK_LAMBDA {
        const auto tap = [&](std::size_t k) VESK_LAMBDA { return load<T>(taps[t + k] + i); };
        constexpr float tap_gain = 0.6f;
        return tap_gain * (tap(0) + tap(1) - tap(2) + tap(3) - tap(4) - tap(5) - tap(6));
    };
    return {sum(0), sum(tap_count / 2)};
}

VESK_INLINE void Reverb::prefetch_block(std::size_t n) const noexcept {
    if (n > longest_piece_) [[unlikely]]
        return;  // some ring is shorter than the run
    const auto pushes = [n](const FrameRing& ring)
                            VESK_LAMBDA { prefetch(ring.write_pointer(n), n); };
    pushes(predelay);
    prefetch(predelay.pointer_at(predelay_samples) - n, n);
    for (const AllPass& stage : diffusers) pushes(stage.ring);
    for (std::size_t h = 0; h < 2; ++h) {
        pushes(tank_allpass_in[h].ring);
        pushes(tank_delay_in[h]);
        pushes(tank_allpass_out[h].ring);
        pushes(tank_delay_out[h]);
    }
    for (const Pair* place : taps()) prefetch(place - n, n);
}

VESK_INLINE void Reverb::pass(const Block& x, const Block& phases, std::size_t n) noexcept {
    Pair* const in = predelay.write_pointer(n);
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        store(in + n - i - frames_per<T>, reverse<sizeof(Pair)>(x.at<T>(i)));
    });
    predelay.advance(n);
    const Pair* const predelayed = predelay.pointer_at(predelay_samples);
    pass_network(predelayed, recur(predelayed, phases, n), n);
}

VESK_INLINE Block Reverb::process(const Block& x, const Block& phases, std::size_t n) noexcept {
    const auto heard = [this](std::size_t count, Pair* out) VESK_LAMBDA {
        const Taps places = taps();
        for_each_vector(count, [&]<class T>(std::size_t i) VESK_LAMBDA {
            const Sums<T> sums = sum_taps<T>(places, i);
            store(out + count - i - frames_per<T>,
                  reverse<sizeof(Pair)>(merge_left_right(sums.a, sums.b)));
        });
    };
    Block out;
    if (n <= longest_piece_) [[likely]] {
        pass(x, phases, n);
        heard(n, out.frames);
        return out;
    }
    for (std::size_t first = 0; first < n; first += longest_piece_) {
        const std::size_t count = min(longest_piece_, n - first);
        pass(x.slice(first, count), phases.slice(first, count), count);
        heard(count, out.frames + first);
    }
    return out;
}

}  // namespace orvane::blocks::vesk
