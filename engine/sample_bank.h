// A bank of looped recordings that a morph position crossfades between.
//
// The position chooses two neighbouring players and an equal-power crossfade between them. Only
// those two run; the others keep their positions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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

    explicit SampleBank(float rate);
    void set_morph(float position);  // 0 to 1
    void rewind() noexcept;          // all players, sounding or not

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
    // n values; up to 7 more elements are written.
    VESK_INLINE void next(float* values, std::size_t n) noexcept;
    VESK_INLINE float next() noexcept {
        float value[lane_count<Oct>];
        next(value, 1);
        return value[0];
    }
};

template <std::size_t N>
VESK_INLINE void SampleBank<N>::next(float* values, std::size_t n) noexcept {
    SamplePlayer* const sounding = &players[index];
    if (sounding[0].reads_samples_directly(n) && sounding[1].reads_samples_directly(n)) [[likely]] {
        const float* const a = sounding[0].take_samples(n);
        const float* const b = sounding[1].take_samples(n);
        for (std::size_t i = 0; i < n; i += lane_count<Oct>)
            store(values + i, load<Oct>(a + i) * gain_a + load<Oct>(b + i) * gain_b);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const float b = sounding[1].read_sample() * gain_b;
        const float a = sounding[0].read_sample() * gain_a;
        values[i] = a + b;
    }
}

}  // namespace orvane::blocks::vesk
