// Noise that repeats without a seam: a loop whose harmonics have chosen levels and random phases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/rotor.h"

namespace orvane::blocks::vesk {

// The level of a single harmonic at a frequency.
struct SpectrumPoint {
    double frequency;  // Hz
    double amplitude;  // peak of the sine
};

// With so many harmonics of random phase the samples are spread almost like a Gaussian's.
struct RandomLoop {
    double rate;         // Hz; the length of the circle at it is the loop's time
    std::uint32_t seed;  // of the phases
    double mean;
    std::span<const SpectrumPoint> spectrum;  // rising; straight lines between, silence outside
    std::span<const SpectrumPoint> lines;     // stand in the place of the harmonic they fall on
};

// `circle` is the unit circle of as many points as the loop has samples.
std::vector<double> make_random_loop(const RandomLoop& recipe, std::span<const Rotor> circle);

// Raises the first half of the loop by `depth` and lowers the second by as much, as factors around
// 1. The change of level takes `fade` samples on either side of its middle.
void tilt_halves(std::span<double> loop, double depth, std::size_t fade);

// Moves the lowest and the highest sample to the given values. What lies beyond four fifths of an
// extreme, the old one or the new, is stretched or squeezed; the body of the loop stays as it is.
void set_extremes(std::span<double> loop, double lowest, double highest);

// Rounds to multiples of 2^-15.
std::vector<float> to_16_bits(std::span<const double> loop);

}  // namespace orvane::blocks::vesk
