// The nine sample tables measured: level, spectrum, shape, loop, and the same bits everywhere.
#include "engine/sample_sources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <numeric>

namespace orvane::blocks::vesk {
namespace {

using Samples = std::vector<double>;
using Spectrum = std::vector<std::complex<double>>;

constexpr std::size_t second = 44100;

// `count` samples of the endless loop.
Samples cut(const Samples& loop, std::size_t from, std::size_t count) {
    Samples piece;
    for (std::size_t i = 0; i < count; ++i) piece.push_back(loop[(from + i) % loop.size()]);
    return piece;
}

// The sum of the squares.
double power(const Samples& x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
}

double rms(const Samples& x) {
    return std::sqrt(power(x) / static_cast<double>(x.size()));
}

// Splits by the smallest prime factor; element k is the sum of x[i] exp(-2 pi i k / n) over i.
Spectrum transform(const Samples& x, std::size_t from, std::size_t stride) {
    const std::size_t n = x.size() / stride;
    if (n == 1) return {x[from]};
    std::size_t factor = 2;
    while (n % factor != 0) ++factor;
    const double turn = -2.0 * std::numbers::pi / static_cast<double>(n);
    Spectrum result(n);
    for (std::size_t r = 0; r < factor; ++r) {
        const Spectrum part = transform(x, from + r * stride, stride * factor);
        for (std::size_t k = 0; k < n; ++k)
            result[k] +=
                part[k % part.size()] * std::polar(1.0, turn * static_cast<double>(r * k % n));
    }
    return result;
}

// Peak of the sine with k periods in the loop. A loop is periodic, so no window is needed and a
// whole number of periods falls on one element. Element 0, the mean, is left out.
Samples amplitudes(const Samples& loop) {
    const Spectrum spectrum = transform(loop, 0, 1);
    Samples result{0.0};
    for (std::size_t k = 1; k < loop.size() / 2; ++k)
        result.push_back(2.0 * std::abs(spectrum[k]) / static_cast<double>(loop.size()));
    return result;
}

struct Levels {
    double rms, lowest, highest, mean;
};

void expect_levels(const Samples& x, const Levels& wanted, double mean_tolerance) {
    const auto [low, high] = std::ranges::minmax(x);
    EXPECT_NEAR(rms(x), wanted.rms, 0.03 * wanted.rms);
    EXPECT_NEAR(low, wanted.lowest, -0.03 * wanted.lowest);
    EXPECT_NEAR(high, wanted.highest, 0.03 * wanted.highest);
    const double mean = std::accumulate(x.begin(), x.end(), 0.0) / static_cast<double>(x.size());
    EXPECT_NEAR(mean, wanted.mean, mean_tolerance);
}

// Hum and hiss, bright hiss, strong hum, rumble, dull hum.
constexpr Levels noise_levels[] = {{0.0671, -0.2824, 0.2846, 0.0017},
                                   {0.0544, -0.3707, 0.2985, 0.0003},
                                   {0.3755, -0.9500, 0.8259, 0.0077},
                                   {0.1639, -0.7030, 0.5792, -0.0011},
                                   {0.2380, -0.5292, 0.5525, -0.0002}};
// dB below the total, by octaves from 31.5 Hz.
constexpr double noise_bands[][10] = {{21, 9, 7, 16, 14, 11, 13, 12, 12, 16},
                                      {14, 6, 6, 15, 21, 22, 17, 11, 8, 9},
                                      {12, 0, 23, 21, 28, 32, 35, 37, 37, 22},
                                      {20, 8, 3, 9, 20, 27, 30, 30, 30, 29},
                                      {12, 0, 22, 23, 25, 24, 24, 26, 33, 37}};
// Peaks at 50, 100, 150, 250 and 350 Hz; 0 where none is told.
constexpr std::size_t mains[] = {50, 100, 150, 250, 350};
constexpr double noise_lines[][5] = {{0.035, 0, 0.047},
                                     {0.030, 0.015, 0.020},
                                     {0.54, 0, 0.0355, 0.0355, 0.0355},
                                     {0.089, 0.062, 0.12},
                                     {0.33, 0, 0.019}};

TEST(NoiseSources, HaveTheirLevelsSpectraAndLoops) {
    for (std::size_t table = 0; table < 5; ++table) {
        SCOPED_TRACE(table);
        const Samples x(noise_sources()[table].begin(), noise_sources()[table].end());
        ASSERT_EQ(x.size(), 2 * second);
        expect_levels(x, noise_levels[table], 0.001);
        for (std::size_t at = 0; at < x.size(); at += 441) {  // frames of 100 ms, also over the end
            const double level = rms(cut(x, at, 4410)) / rms(x);
            EXPECT_TRUE(level > 0.8 && level < 1.5) << "at " << at << ": " << level;
        }

        const Samples harmonics = amplitudes(x);  // two a hertz
        for (std::size_t i = 0; i < 5; ++i) {
            if (const double peak = noise_lines[table][i]; peak > 0.0) {
                EXPECT_NEAR(harmonics[2 * mains[i]], peak, 0.05 * peak) << mains[i] << " Hz";
            }
        }
        double centre = 31.25;  // a band reaches from here / sqrt 2 to here * sqrt 2
        for (const double wanted : noise_bands[table]) {
            const auto low = static_cast<std::size_t>(std::numbers::sqrt2 * centre) + 1;
            const std::size_t count = std::min(low, harmonics.size() - low);
            const double share = power(cut(harmonics, low, count)) / power(harmonics);
            EXPECT_NEAR(-10.0 * std::log10(share), wanted, wanted < 30.0 ? 1.5 : 3.0)
                << "dB around " << centre;
            centre *= 2.0;
        }

        Samples steps;
        for (std::size_t i = 1; i < x.size(); ++i) steps.push_back(std::abs(x[i] - x[i - 1]));
        std::ranges::nth_element(steps, steps.begin() + second);
        EXPECT_LT(std::abs(x.front() - x.back()), steps[second]) << "a click, over the median step";
    }
}

TEST(NoiseSources, HumIsLouderInItsFirstSecondAndRumbleSpikesOnAGrid) {
    const auto table = [](std::size_t i) {
        return Samples(noise_sources()[i].begin(), noise_sources()[i].end());
    };
    for (const auto& [i, first, other] : {std::tuple{2U, 0.426, 0.317}, {4U, 0.265, 0.208}}) {
        EXPECT_NEAR(rms(cut(table(i), 0, second)), first, 0.03 * first);
        EXPECT_NEAR(rms(cut(table(i), second, second)), other, 0.03 * other);
    }
    const Samples x = table(3);
    int spikes = 0;
    std::array<int, 441> places{};  // on a grid of 441 samples
    for (std::size_t i = 1; i + 1 < x.size(); ++i) {
        // 0.09 is nine times the RMS of this difference; a spike's neighbours get half of it.
        if (std::abs(x[i] - 0.5 * (x[i - 1] + x[i + 1])) < 0.09) continue;
        ++spikes;
        ++places[i++ % 441];
    }
    EXPECT_EQ(spikes, 36);
    EXPECT_GE(std::ranges::max(places), 24);
}

// Three swings, two pulses, a rough curve, white noise.
constexpr Levels wobble_levels[] = {{0.2992, -0.6273, 0.9500, 0.0},
                                    {0.3620, -0.9500, 0.5067, 0.0},
                                    {0.4307, -0.6964, 0.9500, 0.0},
                                    {0.3515, -1.0, 1.0, 0.0}};
constexpr int wobble_crossings[] = {6, 12, 44, 186};
constexpr std::size_t wobble_strongest[][3] = {{3, 1, 4}, {3, 1, 4}, {10, 14, 1}};
// Of harmonics 1 to 4, 5 to 16, 17 and up.
constexpr double wobble_shares[][3] = {
    {0.86, 0.10, 0.04}, {0.67, 0.27, 0.06}, {0.08, 0.37, 0.55}, {0.01, 0.02, 0.97}};
// Every sixteenth sample.
constexpr double wobble_outlines[][24] = {
    {0.30,  0.14,  -0.15, -0.25, 0.09, 0.45,  0.27,  0.17,  0.21,  0.23,  0.26, -0.27,
     -0.50, -0.31, -0.09, 0.09,  0.04, -0.11, -0.34, -0.61, -0.37, -0.07, 0.25, 0.35},
    {0.06, 0.14, 0.16,  0.13,  0.19,  0.14, 0.03, 0.13, -0.09, 0.03, -0.01, 0.01,
     0.07, 0.18, -0.46, -0.95, -0.95, 0.51, 0.51, 0.01, -0.03, 0.15, 0.04,  0.01}};

TEST(WobbleSources, HaveTheirLevelsHarmonicsOutlinesAndJumps) {
    std::vector<Samples> tables;
    for (const auto& table : wobble_sources()) tables.emplace_back(table.begin(), table.end());
    for (std::size_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const Samples& x = tables[i];
        ASSERT_EQ(x.size(), 384U);
        expect_levels(x, wobble_levels[i], 0.011);
        int crossings = 0;
        for (std::size_t at = 0; at < x.size(); ++at) {
            EXPECT_NE(x[at], 0.0) << "would leave the number of crossings open, at " << at;
            crossings += (x[at] < 0.0) != (x[(at + 1) % x.size()] < 0.0);
        }
        EXPECT_EQ(crossings, wobble_crossings[i]);

        const Samples harmonics = amplitudes(x);
        constexpr std::size_t borders[] = {1, 5, 17, 192};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto part = cut(harmonics, borders[k], borders[k + 1] - borders[k]);
            EXPECT_NEAR(power(part) / power(harmonics), wobble_shares[i][k], 0.02) << "part " << k;
        }
        Samples ranked = harmonics;
        std::ranges::sort(ranked, std::greater{});
        if (i == 3) {
            EXPECT_LT(ranked[0] * ranked[0], 0.02 * power(harmonics)) << "one stands out";
            continue;
        }
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_EQ(ranked[k], harmonics[wobble_strongest[i][k]]) << "of rank " << k;
        EXPECT_LE(std::abs(x.front() - x.back()), 0.0103) << "from the end to the start";
        for (std::size_t k = 0; k < 24 && i < 2; ++k)
            EXPECT_NEAR(x[16 * k], wobble_outlines[i][k], 0.02) << "at " << 16 * k;
    }

    const Samples &swings = tables[0], &pulses = tables[1];
    EXPECT_EQ(std::ranges::count_if(swings, [](double x) { return x > 0.65; }), 5) << "the spike";
    EXPECT_EQ(std::ranges::max_element(swings) - swings.begin(), 360);
    EXPECT_GT(pulses[232], -0.93) << "35 samples, no more";
    EXPECT_NEAR(pulses[268] - pulses[267], 1.44, 0.02);
    EXPECT_NEAR(pulses[301], 0.0, 0.02);
    for (std::size_t i = 0; i <= 208; ++i) EXPECT_NEAR(pulses[i], 0.1, 0.2) << i;
    for (std::size_t i = 233; i <= 300; ++i)
        EXPECT_NEAR(pulses[i], i < 268 ? -0.95 : 0.4967, 0.02) << i;
}

// FNV-1a over the 16-bit integers, low byte first.
template <class Tables>
std::uint64_t hash(const Tables& tables) {
    std::uint64_t result = 14695981039346656037U;
    for (const std::vector<float>& table : tables) {
        for (const float x : table) {
            const auto integer = static_cast<std::int16_t>(x * 32768.0f);
            EXPECT_EQ(static_cast<float>(integer), x * 32768.0f) << "a multiple of 2^-15 below 1";
            const auto bits = static_cast<std::uint16_t>(integer);
            result = (result ^ (bits & 255U)) * 1099511628211U;
            result = (result ^ (bits >> 8U)) * 1099511628211U;
        }
    }
    return result;
}

// Two builds that disagree here would not render the same sound.
TEST(SampleSources, AreTheSameBitsInEveryBuild) {
    EXPECT_EQ(hash(noise_sources()), 0x397a976ee44ed530U);
    EXPECT_EQ(hash(wobble_sources()), 0x368e21f538b4f4deU);
}

}  // namespace
}  // namespace orvane::blocks::vesk
