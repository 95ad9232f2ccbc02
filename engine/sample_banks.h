// Looped recordings of old equipment: a bank of noises and a bank of wobble shapes.
//
// A morph position chooses two neighbouring tables of a bank and an equal-power crossfade between
// them; only those two players run. Tables are played one sample a sample at every rate.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/block.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/prefetch.h"

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
    // The next n values stand in the table as they are, and a whole vector more behind them.
    VESK_INLINE bool plays_whole_samples(std::size_t n) const noexcept {
        const auto i = static_cast<std::int64_t>(position);
        return increment == 1.0 && position == static_cast<double>(i) &&
               static_cast<std::uint64_t>(i) + n + lane_count<Oct> <= table->length;
    }
    // The sample at the position, later ones behind it.
    VESK_INLINE const float* place() const noexcept {
        return table->samples.data() + 1 + static_cast<std::int64_t>(position);
    }
    VESK_INLINE const float* whole_samples(std::size_t n) noexcept {
        const float* const x = place();
        position += static_cast<double>(static_cast<std::int64_t>(n));
        return x;
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
    // Asks for what the next n values meet. The wobble is what a run needs first, with nobody to
    // hide behind: a bank asks for what lies a common vector ahead, too.
    VESK_INLINE void prefetch_block(std::size_t n) const noexcept {
        constexpr std::ptrdiff_t common_vector = 64;
        for (std::uint64_t i = index; i < index + 2; ++i) {
            prefetch(players[i].place(), n);
            prefetch(players[i].place() + common_vector, n);
        }
    }
    // n values; room for a whole vector more behind them.
    VESK_INLINE void next(float* values, std::size_t n) noexcept;
    VESK_INLINE float next() noexcept {
        float value[lane_count<Oct>];
        next(value, 1);
        return value[0];
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

template <std::size_t N>
VESK_INLINE void SampleBank<N>::next(float* values, std::size_t n) noexcept {
    SamplePlayer* const pair = &players[index];
    if (pair[0].plays_whole_samples(n) && pair[1].plays_whole_samples(n)) [[likely]] {
        // At whole positions the interpolation gives the sample itself.
        const float* const x = pair[0].whole_samples(n);
        const float* const y = pair[1].whole_samples(n);
        for (std::size_t i = 0; i < n; i += lane_count<Oct>)
            store(values + i, load<Oct>(x + i) * gain_a + load<Oct>(y + i) * gain_b);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const float b = pair[1].read_sample() * gain_b;
        const float a = pair[0].read_sample() * gain_a;
        values[i] = a + b;
    }
}

}  // namespace orvane::blocks::vesk
