// Looped noise without a seam: a sum of harmonics with given levels and random phases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/rotor.h"

namespace orvane::blocks::vesk {

// The level of one harmonic.
struct SpectrumPoint {
    double frequency;  // Hz
    double amplitude;  // peak of the sine
};

// The sum of so many harmonics of random phase is nearly Gaussian.
struct RandomLoop {
    double rate;         // Hz; the loop lasts as many samples as its circle has points
    std::uint32_t seed;  // of the phases
    double mean;
    std::span<const SpectrumPoint> spectrum;  // by rising frequency; linear between, 0 outside
    std::span<const SpectrumPoint> lines;     // each replaces its nearest harmonic
};

// `circle` is the unit circle of as many points as the loop has samples.
std::vector<double> make_random_loop(const RandomLoop& recipe, std::span<const Rotor> circle);

// Multiplies the first half of the loop by 1 + depth and the second by 1 - depth. At the borders of
// the halves the gain crosses 1 in a fade of `fade` samples on either side.
void tilt_halves(std::span<double> loop, double depth, std::size_t fade);

// Moves the lowest and the highest sample to the given values. Only samples beyond four fifths of
// an extreme, the old or the new one, are scaled; all others are unchanged.
void set_extremes(std::span<double> loop, double lowest, double highest);

// Rounds to multiples of 2^-15.
std::vector<float> to_16_bits(std::span<const double> loop);

}  // namespace orvane::blocks::vesk
