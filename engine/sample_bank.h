// A bank of looped recordings that a morph position crossfades between.
//
// The position chooses two neighbouring players and an equal-power crossfade between them. Only
// those two run; the others keep their positions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/frame_values.h"
#include "engine/lanes.h"
#include "engine/prefetch.h"
#include "engine/sample_player.h"

namespace orvane::blocks::vesk {

template <std::size_t N>
struct SampleBank {
    std::array<SamplePlayer, N> players;
    std::uint64_t index = 0;  // the lower of the two sounding players, 0 to N - 2
    float gain_a = 1.0f;      // of player index
    float gain_b = 0.0f;      // of player index + 1

    // What a morph position from 0 to 1 sets.
    struct Morph {
        std::uint64_t index;
        float gain_a;
        float gain_b;
    };
    static Morph morph_at(float position) noexcept;
    static std::uint64_t index_at(float position) noexcept;

    explicit SampleBank(float rate);
    void set_morph(float position);
    void rewind() noexcept;  // all players, sounding or not

    // Prefetches what the next n values read. The wobble bank is read at the very start of a
    // block, before a prefetch could take effect. So both banks also prefetch what the same block
    // of the next vector reads, for hosts with vectors of 64 frames.
    VESK_INLINE void prefetch_block(std::size_t n) const noexcept {
        constexpr std::ptrdiff_t host_vector = 64;
        for (std::uint64_t i = index; i < index + 2; ++i) {
            prefetch(players[i].pointer(), n);
            prefetch(players[i].pointer() + host_vector, n);
        }
    }
    // n values; up to 7 more elements are written. a and b: the values of gain_a and gain_b.
    template <class Values>
    VESK_INLINE void next(float* values, Values a, Values b, std::size_t n) noexcept;
    VESK_INLINE float next() noexcept {
        float value[lane_count<Oct>];
        next(value, Constant{gain_a}, Constant{gain_b}, 1);
        return value[0];
    }
};

template <std::size_t N>
template <class Values>
VESK_INLINE void SampleBank<N>::next(float* values, Values a, Values b, std::size_t n) noexcept {
    SamplePlayer* const sounding = &players[index];
    if (sounding[0].reads_samples_directly(n) && sounding[1].reads_samples_directly(n)) [[likely]] {
        const float* const from_a = sounding[0].take_samples(n);
        const float* const from_b = sounding[1].take_samples(n);
        for (std::size_t i = 0; i < n; i += lane_count<Oct>)
            store(values + i, load<Oct>(from_a + i) * a.template mono<Oct>(i) +
                                  load<Oct>(from_b + i) * b.template mono<Oct>(i));
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const float of_b = sounding[1].read_sample() * b.template mono<float>(i);
        const float of_a = sounding[0].read_sample() * a.template mono<float>(i);
        values[i] = of_a + of_b;
    }
}

}  // namespace orvane::blocks::vesk
