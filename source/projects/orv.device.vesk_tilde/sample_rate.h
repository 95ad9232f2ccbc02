// The sample rates that the effect accepts.
#pragma once

namespace kv7::orv {

// Hz. Up to the highest one every read position is an exact 32-bit float, and an instance takes
// four times the memory that it takes at 192 kHz.
constexpr double lowest_sample_rate = 0.01;
constexpr double highest_sample_rate = 768000.0;

// Where the host names no such rate while an object is made; "dsp64" brings the real one.
constexpr double fallback_sample_rate = 44100.0;

constexpr bool is_sample_rate(double hz) noexcept {
    return hz >= lowest_sample_rate && hz <= highest_sample_rate;  // false for not a number
}

// Throws std::invalid_argument with a text that names the rate and the accepted range.
void require_sample_rate(double hz);

}  // namespace kv7::orv
