// Looped recordings of old equipment: a bank of noises and a bank of wobble shapes.
//
// A morph position chooses two neighbouring tables of a bank and an equal-power crossfade between
// them; only those two players run. Tables are played one sample a sample at every rate.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/fast_math.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

struct Vesk;

struct SampleTable {
    std::vector<float> samples;  // x[n-1], x[0], ... x[n-1], x[0], x[1]: no read needs a wrap
    std::uint64_t length = 0;    // n, without these guards
    double sample_rate = 0.0;    // Hz at which the table counts as recorded

    SampleTable(const std::vector<float>& source, double rate);  // an empty source is one zero
};

struct SamplePlayer {
    const SampleTable* table = nullptr;  // none until one is attached
    double position = 0.0;               // table samples, 0 up to the table's length
    double increment = 0.0;              // per output sample
    double sample_rate;                  // Hz, of the engine

    explicit SamplePlayer(double rate) : sample_rate(rate) {}
    VESK_INLINE float read_sample() noexcept;
    // n values at table steps of one sample, each times gain, added to sum.
    VESK_INLINE void add_whole_samples(float* sum, std::size_t n, float gain) noexcept;
    VESK_INLINE bool plays_whole_samples() const noexcept {
        return increment == 1.0 &&
               position == static_cast<double>(static_cast<std::int64_t>(position));
    }
};

template <std::size_t N>
struct SampleBank {
    std::array<SamplePlayer, N> players;
    std::uint64_t index = 0;  // the lower of the two sounding players, 0 to N - 2
    float gain_a = 1.0f;      // of player index
    float gain_b = 0.0f;      // of player index + 1

    explicit SampleBank(float rate);
    void set_morph(float position);  // 0 to 1
    void rewind() noexcept;          // every player, sounding or not
    VESK_INLINE void next(float* values, std::size_t n) noexcept;
    VESK_INLINE float next() noexcept {
        float value;
        next(&value, 1);
        return value;
    }
};

void attach_table(SamplePlayer& player, const SampleTable& table);

// The tables of one engine at its rate, about 1.77 million bytes. Attached to the engine's banks by
// construction; the engine's players refer into it and own nothing.
struct SampleTableSet {
    std::array<SampleTable, 5> noise_tables;
    std::array<SampleTable, 4> wobble_tables;

    SampleTableSet(Vesk& engine, float rate);  // of the built-in recordings
    SampleTableSet(Vesk& engine, float rate, const std::array<std::vector<float>, 5>& noise,
                   const std::array<std::vector<float>, 4>& wobble);
};

VESK_INLINE float SamplePlayer::read_sample() noexcept {
    const auto i = static_cast<std::int64_t>(position);
    const auto t = static_cast<float>(position - static_cast<double>(i));
    const float* const p = table->samples.data() + i;
    const float value = hermite_interpolate(p[0], p[1], p[2], p[3], t);
    const double moved = position + increment;
    const auto length = static_cast<double>(static_cast<std::int64_t>(table->length));
    position = moved >= length ? moved - length : moved;
    return value;
}

VESK_INLINE void SamplePlayer::add_whole_samples(float* sum, std::size_t n, float gain) noexcept {
    auto i = static_cast<std::uint64_t>(position);
    while (n != 0) {
        const std::size_t count = smaller(n, static_cast<std::size_t>(table->length - i));
        const float* const x = table->samples.data() + 1 + i;
        for (std::size_t k = 0; k < count; ++k) sum[k] += x[k] * gain;
        sum += count;
        n -= count;
        i = i + count == table->length ? 0 : i + count;
    }
    position = static_cast<double>(i);
}

template <std::size_t N>
VESK_INLINE void SampleBank<N>::next(float* values, std::size_t n) noexcept {
    SamplePlayer* const pair = &players[index];
    if (pair[0].plays_whole_samples() && pair[1].plays_whole_samples()) [[likely]] {
        // At whole positions the interpolation gives the sample itself.
        for (std::size_t i = 0; i < n; ++i) values[i] = 0.0f;
        pair[1].add_whole_samples(values, n, gain_b);
        pair[0].add_whole_samples(values, n, gain_a);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const float b = pair[1].read_sample() * gain_b;
        const float a = pair[0].read_sample() * gain_a;
        values[i] = a + b;
    }
}

}  // namespace orvane::blocks::vesk
