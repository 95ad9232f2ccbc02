// Plays a sample table in a loop, interpolating where its rate is not the engine's.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/sample_table.h"

namespace orvane::blocks::vesk {

struct SamplePlayer {
    const SampleTable* table = nullptr;  // not owned; none until attach_table
    double position = 0.0;               // table samples, 0 up to the table's length
    double increment = 0.0;              // per output sample
    double sample_rate;                  // Hz, of the engine

    explicit SamplePlayer(double rate) : sample_rate(rate) {}

    VESK_INLINE float read_sample() noexcept;

    // At an increment of 1 the next n values are the table's own samples, without interpolation.
    // True when that holds and n + 8 samples are left before the end, so that vector loads for n
    // values stay within the table.
    VESK_INLINE bool reads_samples_directly(std::size_t n) const noexcept {
        const auto i = static_cast<std::int64_t>(position);
        return increment == 1.0 && position == static_cast<double>(i) &&
               static_cast<std::uint64_t>(i) + n + lane_count<Oct> <= table->length;
    }
    // To the sample at the position; later ones follow it.
    VESK_INLINE const float* pointer() const noexcept {
        return table->samples.data() + 1 + static_cast<std::int64_t>(position);
    }
    // To the next n samples; only after reads_samples_directly(n).
    VESK_INLINE const float* take_samples(std::size_t n) noexcept {
        const float* const x = pointer();
        position += static_cast<double>(static_cast<std::int64_t>(n));
        return x;
    }
};

// Starts the player at the table's beginning.
void attach_table(SamplePlayer& player, const SampleTable& table);

VESK_INLINE float SamplePlayer::read_sample() noexcept {
    const auto i = static_cast<std::int64_t>(position);
    const auto t = static_cast<float>(position - static_cast<double>(i));
    const float* const p = table->samples.data() + i;
    const float value = hermite_interpolate(p[0], p[1], p[2], p[3], t);
    const double next = position + increment;
    const auto length = static_cast<double>(static_cast<std::int64_t>(table->length));
    position = next >= length ? next - length : next;
    return value;
}

}  // namespace orvane::blocks::vesk
