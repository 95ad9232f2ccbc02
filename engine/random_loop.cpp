#include "engine/random_loop.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "engine/harmonic_sum.h"

namespace orvane::blocks::vesk {
namespace {

constexpr double knee = 0.8;  // of an extreme, the old or the new; samples beyond it are scaled

std::size_t nearest(double harmonic) {
    return static_cast<std::size_t>(std::floor(harmonic + 0.5));
}

}  // namespace

std::vector<double> make_random_loop(const RandomLoop& recipe, std::span<const Rotor> circle) {
    const double fundamental = recipe.rate / static_cast<double>(circle.size());
    std::vector<double> amplitudes(circle.size() / 2);
    for (std::size_t i = 0; i + 1 < recipe.spectrum.size(); ++i) {
        const auto [from, a] = recipe.spectrum[i];
        const auto [to, b] = recipe.spectrum[i + 1];
        const double slope = (b - a) / (to - from);
        const std::size_t last = std::min(nearest(to / fundamental), amplitudes.size() - 1);
        for (std::size_t k = nearest(from / fundamental); k <= last; ++k)
            amplitudes[k] = a + slope * (static_cast<double>(k) * fundamental - from);
    }
    for (const auto [frequency, amplitude] : recipe.lines)
        amplitudes[nearest(frequency / fundamental)] = amplitude;

    // The standard defines the generator's numbers to the bit, but not those of its distributions.
    std::mt19937 random(recipe.seed);
    std::vector<Rotor> harmonics(amplitudes.size());
    for (std::size_t k = 1; k < harmonics.size(); ++k)
        harmonics[k] = amplitudes[k] * circle[random() % circle.size()];
    harmonics[0] = {recipe.mean, 0.0};
    return sum_harmonics(harmonics, circle);
}

void tilt_halves(std::span<double> loop, double depth, std::size_t fade) {
    const std::size_t half = loop.size() / 2;
    for (std::size_t i = 0; i < half; ++i) {
        const std::size_t from_a_border = std::min({i, half - i, fade});
        const double u = static_cast<double>(from_a_border) / static_cast<double>(fade);
        const double change = depth * (1.5 * u - 0.5 * u * u * u);  // level at either end of a fade
        loop[i] *= 1.0 + change;
        loop[half + i] *= 1.0 - change;
    }
}

void set_extremes(std::span<double> loop, double lowest, double highest) {
    const auto [lowest_at, highest_at] = std::minmax_element(loop.begin(), loop.end());
    const double low = *lowest_at;
    const double high = *highest_at;
    const double low_knee = knee * std::max(low, lowest);
    const double high_knee = knee * std::min(high, highest);
    const double low_slope = (lowest - low_knee) / (low - low_knee);
    const double high_slope = (highest - high_knee) / (high - high_knee);
    for (double& x : loop) {
        if (x < low_knee) x = low_knee + low_slope * (x - low_knee);
        if (x > high_knee) x = high_knee + high_slope * (x - high_knee);
    }
}

std::vector<float> to_16_bits(std::span<const double> loop) {
    std::vector<float> samples;
    samples.reserve(loop.size());
    for (const double x : loop)
        samples.push_back(static_cast<float>(std::floor(x * 32768.0 + 0.5) / 32768.0));
    return samples;
}

}  // namespace orvane::blocks::vesk
