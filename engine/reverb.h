// A plate reverb: predelay, input filter, four diffusers, and a tank of two crossed halves.
//
//   x -> predelay -> bandwidth -> diffuser 0 -> 1 -> 2 -> 3 -+
//                                                            |
//   +--------------------------------------------------------+
//   |
//   +-> (+) -> allpass_in 0 -> delay_in 0 -> damping -> * decay -> allpass_out 0 -> delay_out 0 -+
//   |    ^                                                                                       |
//   |    +------------------------------ * decay <-------------------------------------------+   |
//   |                                                                                        |   |
//   +-> (+) -> allpass_in 1 -> delay_in 1 -> damping -> * decay -> allpass_out 1 -> delay_out 1  |
//        ^                                                                                       |
//        +------------------------------ * decay <-----------------------------------------------+
//
// Two sums of seven taps each, from the delays and allpass_out of both halves, are the output.
//
// After Dattorro, "Effect Design 1", J. Audio Eng. Soc. 45(9), 1997. Unlike the paper each ring
// holds stereo frames: the left and the right lanes are two independent copies of the network that
// share lengths and oscillators. An oscillator each moves the read position of allpass_in, which
// interpolates with a first-order all-pass. The filters are matched one-poles. All lengths are
// samples at 29761 Hz, scaled to the rate.
#pragma once

#include <array>
#include <cstdint>

#include "engine/allpass.h"
#include "engine/block.h"
#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/matched_lowpass.h"
#include "engine/prefetch.h"

namespace orvane::blocks::vesk {

struct Reverb {
    static constexpr std::size_t tap_count = 14;  // seven in each sum

    float sample_rate;            // Hz
    float length_scale;           // sample_rate / 29761
    float predelay_time = 0.01f;  // s
    std::uint64_t predelay_samples = 0;
    FrameRing predelay;
    Pair bandwidth_cutoff = broadcast<Pair>(14880.5f);  // Hz
    MatchedLowpass bandwidth_filter;
    Pair bandwidth_state{};
    std::array<AllPass, 4> diffusers;  // in signal order
    Pair lfo_phase{};                  // 0 up to 1; of half 0 and of half 1
    Pair lfo_increment{};              // per sample
    std::array<ModulatedAllPass, 2> tank_allpass_in;
    std::array<AllPass, 2> tank_allpass_out;
    std::array<FrameRing, 2> tank_delay_in;   // after tank_allpass_in
    std::array<FrameRing, 2> tank_delay_out;  // after tank_allpass_out
    Pair damping_cutoff = bandwidth_cutoff;   // Hz
    MatchedLowpass damping_filter;            // of both halves
    std::array<Pair, 2> damping_state{};
    Pair decay = broadcast<Pair>(0.5f);  // tank gain, both lanes equal
    std::array<std::uint64_t, tap_count> output_taps{};

    explicit Reverb(float rate);  // throws std::bad_alloc
    void redesign_bandwidth();
    void redesign_damping();
    void clear() noexcept;  // ring contents and states; coefficients and decay stay

    // Prefetches what the next n frames read and write.
    VESK_INLINE void prefetch_block(std::size_t n) const noexcept;

    VESK_INLINE Pair next_lfo_phase(Pair phase) const noexcept;

    // The stereo output for n frames. lfo_phases are those of each frame; the caller advances
    // lfo_phase. gain: the values of decay.
    template <class Values>
    VESK_INLINE Block process(const Block& x, const Block& lfo_phases, Values gain,
                              std::size_t n) noexcept;

private:
    // Inside the network a sub-block is in the order of the rings, newest frame first: what it
    // reads or writes of a ring is one range of memory.

    // What the recursive filters give for a sub-block. The two in the tank depend only on frames
    // before it, and bandwidth_lp only on the predelay, so they are computed first and together.
    struct FilterOutputs {
        Block bandwidth_lp;                 // of the predelay's output
        std::array<Block, 2> damping_lp;    // of the outputs of tank_delay_in
        std::array<Block, 2> interpolated;  // the delayed signals of tank_allpass_in
    };
    using TapPointers = std::array<const Pair*, tap_count>;
    using TappedRings = std::array<const FrameRing*, tap_count>;

    // n is at most max_sub_block_ in these.
    template <class Values>
    VESK_INLINE void run_network(const Block& x, const Block& lfo_phases, Values gain,
                                 std::size_t n) noexcept;
    VESK_INLINE FilterOutputs run_recursive_filters(const Pair* predelayed, const Block& lfo_phases,
                                                    std::size_t n) noexcept;
    template <class Values>
    VESK_INLINE void run_allpasses(const Pair* predelayed, const FilterOutputs& filtered,
                                   Values gain, std::size_t n) noexcept;

    // The delays of tank_allpass_in in samples, half 0 left and half 1 right, oldest frame first.
    VESK_INLINE Block lfo_delays(const Block& lfo_phases, std::size_t n) const noexcept;

    VESK_INLINE TappedRings tapped_rings() const noexcept;
    // To the newest frame's taps; those of the i-th frame before it are i elements on.
    VESK_INLINE TapPointers tap_pointers() const noexcept;
    template <class T>
    VESK_INLINE static T sum_taps(const TapPointers& taps, std::size_t i) noexcept;

    // The most frames of which no stage reads what another of them pushes, and no tap what one of
    // them overwrites. Below max_block at low rates only.
    std::size_t max_sub_block_ = 1;
    std::size_t find_max_sub_block() const;
};

VESK_INLINE Pair Reverb::next_lfo_phase(Pair phase) const noexcept {
    const Pair next = phase + lfo_increment;
    return next >= 1.0f ? next - 1.0f : next;
}

VESK_INLINE Block Reverb::lfo_delays(const Block& lfo_phases, std::size_t n) const noexcept {
    return map_block(
        n,
        [this]<class T>(T p) VESK_LAMBDA {
            constexpr float excursion = 8.0f;  // samples at 29761 Hz, either way
            const T lengths = broadcast<T>(672.0f, 908.0f);
            return ((fast_sine_cycle(p) + 1.0f) * excursion + lengths) * length_scale;
        },
        lfo_phases);
}

VESK_INLINE Reverb::FilterOutputs Reverb::run_recursive_filters(const Pair* predelayed,
                                                                const Block& lfo_phases,
                                                                std::size_t n) noexcept {
    ModulatedAllPass& m0 = tank_allpass_in[0];
    ModulatedAllPass& m1 = tank_allpass_in[1];
    const Pair* const end0 = tank_delay_in[0].write_pointer(n);
    const Pair* const end1 = tank_delay_in[1].write_pointer(n);

    // Each interpolator's read position: a storage index, and its coefficient for the fraction.
    const auto as_int32 = [](std::uint64_t x) VESK_LAMBDA { return static_cast<std::int32_t>(x); };
    const IntPair size{as_int32(m0.ring.size), as_int32(m1.ring.size)};
    const IntPair head{as_int32(m0.ring.head), as_int32(m1.ring.head)};
    const Pair max_position = to_float(size - 2);
    const Block delays = lfo_delays(lfo_phases, n);
    Block coefficient;
    IntPair index[max_block];
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T e = delays.at<T>(i) - 1.0f;
        const T position =
            broadcast<T>(max_position) >= e ? max(e, T{}) : broadcast<T>(max_position);
        const Integers<T> integer_part = to_int(position);
        const T t = position - to_float(integer_part);
        coefficient.set(i, (1.0f - t) / (1.0f + t));
        // The earlier frames of this sub-block are not pushed yet: the distance is shorter by them.
        const Integers<T> k = integer_part + broadcast<T>(head) - frame_indices<T>(i);
        store(index + i, k >= broadcast<T>(size) ? k - broadcast<T>(size) : k);
    });

    const Pair bandwidth_gain = bandwidth_filter.step_gain();
    const Quad damping_gain = combine(damping_filter.step_gain(), damping_filter.step_gain());
    Pair bandwidth = bandwidth_state;
    Quad damping = combine(damping_state[0], damping_state[1]);
    Quad interpolator = combine(m0.interpolator_state, m1.interpolator_state);
    FilterOutputs out;
    // Three independent loop-carried chains in one loop, so that their latencies overlap.
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t to = n - 1 - i;
        out.bandwidth_lp[to] = MatchedLowpass::lowpass(predelayed[to], bandwidth, bandwidth_gain);

        const Quad ends = combine(end0[to], end1[to]);
        const Quad damped = MatchedLowpass::lowpass(ends, damping, damping_gain);
        out.damping_lp[0][to] = lower_half(damped);
        out.damping_lp[1][to] = upper_half(damped);

        const Quad p0 = load<Quad>(m0.ring.storage.get() + index[i][0]);
        const Quad p1 = load<Quad>(m1.ring.storage.get() + index[i][1]);
        const Pair c = coefficient[i];
        const Quad a = __builtin_shufflevector(c, c, 0, 0, 1, 1);
        interpolator = (combine(lower_half(p0), lower_half(p1)) - interpolator) * a +
                       combine(upper_half(p0), upper_half(p1));
        out.interpolated[0][to] = lower_half(interpolator);
        out.interpolated[1][to] = upper_half(interpolator);
    }
    bandwidth_state = bandwidth;
    damping_state = {lower_half(damping), upper_half(damping)};
    m0.interpolator_state = lower_half(interpolator);
    m1.interpolator_state = upper_half(interpolator);
    return out;
}

template <class Values>
VESK_INLINE void Reverb::run_allpasses(const Pair* predelayed, const FilterOutputs& filtered,
                                       Values gain, std::size_t n) noexcept {
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
        T y = bandwidth_filter.output(load<T>(predelayed + i), filtered.bandwidth_lp.at<T>(i));
        y = diffusers[0].step(y, diffused[0] + i);
        y = diffusers[1].step(y, diffused[1] + i);
        y = diffusers[2].step(y, diffused[2] + i);
        y = diffusers[3].step(y, diffused[3] + i);
        // Each half takes the other one's end; both are read before either is overwritten.
        const T g = gain.template newest_first<T>(i, n);
        const T into1 = y + g * load<T>(delay_out[0] + i);
        const T into0 = y + g * load<T>(delay_out[1] + i);
        const auto run_half = [&](std::size_t h, T x) VESK_LAMBDA {
            const T delayed = filtered.interpolated[h].at<T>(i);
            const T end = load<T>(delay_in[h] + i);
            store(delay_in[h] + i, tank_allpass_in[h].step(x, delayed, in[h] + i));
            const T damped = damping_filter.output(end, filtered.damping_lp[h].at<T>(i));
            store(delay_out[h] + i, tank_allpass_out[h].step(g * damped, out[h] + i));
        };
        run_half(0, into0);
        run_half(1, into1);
    });

    for (AllPass& stage : diffusers) stage.ring.advance(n);
    for (std::size_t h = 0; h < 2; ++h) {
        tank_allpass_in[h].ring.advance(n);
        tank_delay_in[h].advance(n);
        tank_allpass_out[h].ring.advance(n);
        tank_delay_out[h].advance(n);
    }
}

template <class Values>
VESK_INLINE void Reverb::run_network(const Block& x, const Block& lfo_phases, Values gain,
                                     std::size_t n) noexcept {
    Pair* const in = predelay.write_pointer(n);
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        store(in + n - i - frames_per<T>, reverse<sizeof(Pair)>(x.at<T>(i)));
    });
    predelay.advance(n);
    const Pair* const predelayed = predelay.pointer_at(predelay_samples);
    run_allpasses(predelayed, run_recursive_filters(predelayed, lfo_phases, n), gain, n);
}

VESK_INLINE Reverb::TappedRings Reverb::tapped_rings() const noexcept {
    const auto& [in0, in1] = tank_delay_in;
    const auto& [out0, out1] = tank_delay_out;
    const FrameRing& mid0 = tank_allpass_out[0].ring;
    const FrameRing& mid1 = tank_allpass_out[1].ring;
    return {&in1, &in1, &mid1, &out1, &in0, &mid0, &out0,
            &in0, &in0, &mid0, &out0, &in1, &mid1, &out1};
}

VESK_INLINE Reverb::TapPointers Reverb::tap_pointers() const noexcept {
    const auto rings = tapped_rings();
    TapPointers taps;
    for (std::size_t t = 0; t < taps.size(); ++t) taps[t] = rings[t]->pointer_at(output_taps[t]);
    return taps;
}

// The left output is the left lane of the first sum, the right output the right lane of the second.
template <class T>
VESK_INLINE T Reverb::sum_taps(const TapPointers& taps, std::size_t i) noexcept {
    const auto sum = [&](std::size_t first) VESK_LAMBDA {
        const auto tap = [&](std::size_t k) VESK_LAMBDA { return load<T>(taps[first + k] + i); };
        constexpr float tap_gain = 0.6f;
        return tap_gain * (tap(0) + tap(1) - tap(2) + tap(3) - tap(4) - tap(5) - tap(6));
    };
    return merge_left_right(sum(0), sum(tap_count / 2));
}

VESK_INLINE void Reverb::prefetch_block(std::size_t n) const noexcept {
    if (n > max_sub_block_) [[unlikely]]
        return;  // some ring is shorter than the block
    const auto prefetch_write = [n](const FrameRing& ring)
                                    VESK_LAMBDA { prefetch(ring.write_pointer(n), n); };
    prefetch_write(predelay);
    prefetch(predelay.pointer_at(predelay_samples) - n, n);
    for (const AllPass& stage : diffusers) prefetch_write(stage.ring);
    for (std::size_t h = 0; h < 2; ++h) {
        prefetch_write(tank_allpass_in[h].ring);
        prefetch_write(tank_delay_in[h]);
        prefetch_write(tank_allpass_out[h].ring);
        prefetch_write(tank_delay_out[h]);
    }
    for (const Pair* tap : tap_pointers()) prefetch(tap - n, n);
}

template <class Values>
VESK_INLINE Block Reverb::process(const Block& x, const Block& lfo_phases, Values gain,
                                  std::size_t n) noexcept {
    const auto mix_taps = [this](std::size_t count, Pair* out) VESK_LAMBDA {
        const TapPointers taps = tap_pointers();
        for_each_vector(count, [&]<class T>(std::size_t i) VESK_LAMBDA {
            store(out + count - i - frames_per<T>, reverse<sizeof(Pair)>(sum_taps<T>(taps, i)));
        });
    };
    Block out;
    if (n == 1 || n <= max_sub_block_) [[likely]] {
        run_network(x, lfo_phases, gain, n);
        mix_taps(n, out.frames);
        return out;
    }
    for (std::size_t first = 0; first < n; first += max_sub_block_) {
        const std::size_t count = min(max_sub_block_, n - first);
        run_network(x.slice(first, count), lfo_phases.slice(first, count), gain.from(first), count);
        mix_taps(count, out.frames + first);
    }
    return out;
}

}  // namespace orvane::blocks::vesk
