// The nine sample tables measured: level, spectrum, shape, loop, and the same bits everywhere.
#include "engine/sample_sources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <map>
#include <numbers>
#include <numeric>
#include <string>

namespace orvane::blocks::vesk {
namespace {

using Samples = std::vector<double>;
using Spectrum = std::vector<std::complex<double>>;

constexpr std::size_t second = 44100;

Samples widen(const std::vector<float>& table) {
    return {table.begin(), table.end()};
}

// `count` samples of the endless loop.
Samples cut(const Samples& loop, std::size_t from, std::size_t count) {
    Samples piece;
    for (std::size_t i = 0; i < count; ++i) piece.push_back(loop[(from + i) % loop.size()]);
    return piece;
}

Samples steps(const Samples& loop) {  // element i leads from sample i to the next, round the loop
    Samples result = cut(loop, 1, loop.size());
    for (std::size_t i = 0; i < loop.size(); ++i) result[i] -= loop[i];
    return result;
}

double rms(const Samples& x) {
    return std::sqrt(std::inner_product(x.begin(), x.end(), x.begin(), 0.0) /
                     static_cast<double>(x.size()));
}

double mean(const Samples& x) {
    return std::accumulate(x.begin(), x.end(), 0.0) / static_cast<double>(x.size());
}

// Splits by the smallest prime factor; element k is the sum of x[i] exp(-2 pi i k / n) over i.
Spectrum transform(const Samples& x, std::size_t from, std::size_t stride, const Spectrum& roots) {
    const std::size_t n = x.size() / stride;
    if (n == 1) return {x[from]};
    std::size_t factor = 2;
    while (n % factor != 0) ++factor;
    Spectrum result(n);
    for (std::size_t r = 0; r < factor; ++r) {
        const Spectrum part = transform(x, from + r * stride, stride * factor, roots);
        for (std::size_t k = 0; k < n; ++k)
            result[k] += part[k % part.size()] * roots[r * k * stride % x.size()];
    }
    return result;
}

// Peak of the sine with k periods in the loop. A loop is periodic, so no window is needed and a
// whole number of periods falls on one element. Element 0, the mean, is left out.
Samples amplitudes(const Samples& loop) {
    const auto n = static_cast<double>(loop.size());
    Spectrum roots;
    for (std::size_t k = 0; k < loop.size(); ++k)
        roots.push_back(std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k) / n));
    const Spectrum spectrum = transform(loop, 0, 1, roots);
    Samples result{0.0};
    for (std::size_t k = 1; k < loop.size() / 2; ++k)
        result.push_back(2.0 * std::abs(spectrum[k]) / n);
    result.push_back(std::numbers::sqrt2 * std::abs(spectrum[loop.size() / 2]) / n);
    return result;
}

// Of the harmonics from `first` up to but not including `last`, a fraction of the total.
double power_share(const Samples& harmonics, double first, double last) {
    double inside = 0.0, total = 0.0;
    for (std::size_t k = 1; k < harmonics.size(); ++k) {
        const double power = harmonics[k] * harmonics[k];
        total += power;
        if (static_cast<double>(k) >= first && static_cast<double>(k) < last) inside += power;
    }
    return inside / total;
}

void expect_near_ratio(double value, double wanted, double tolerance, const std::string& what) {
    EXPECT_NEAR(value / wanted, 1.0, tolerance) << what << " is " << value << ", not " << wanted;
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

struct Levels {
    double rms, lowest, highest, mean;
};

void expect_levels(const Samples& x, const Levels& wanted, double mean_tolerance) {
    const auto [low, high] = std::ranges::minmax(x);
    expect_near_ratio(rms(x), wanted.rms, 0.03, "the RMS");
    expect_near_ratio(low, wanted.lowest, 0.03, "the lowest sample");
    expect_near_ratio(high, wanted.highest, 0.03, "the highest sample");
    EXPECT_NEAR(mean(x), wanted.mean, mean_tolerance);
}

// What each noise table should measure. A harmonic k lies at k / 2 Hz at 44100 Hz.
struct NoiseRow {
    const char* name;
    Levels levels;
    std::array<double, 2> halves;  // RMS of the first second and of the other
    std::array<double, 10> bands;  // dB below the total, by octaves from 31.5 Hz
    std::map<int, double> lines;   // Hz, peak
};

const std::array<NoiseRow, 5> noise_rows{{
    {"hum and hiss",
     {0.0671, -0.2824, 0.2846, 0.0017},
     {0.0671, 0.0671},
     {21, 9, 7, 16, 14, 11, 13, 12, 12, 16},
     {{50, 0.035}, {150, 0.047}}},
    {"bright hiss",
     {0.0544, -0.3707, 0.2985, 0.0003},
     {0.0544, 0.0544},
     {14, 6, 6, 15, 21, 22, 17, 11, 8, 9},
     {{50, 0.030}, {100, 0.015}, {150, 0.020}}},
    {"strong hum",
     {0.3755, -0.9500, 0.8259, 0.0077},
     {0.426, 0.317},
     {12, 0, 23, 21, 28, 32, 35, 37, 37, 22},
     {{50, 0.54}, {150, 0.0355}, {250, 0.0355}, {350, 0.0355}}},  // odd ones: 0.033 to 0.038
    {"rumble",
     {0.1639, -0.7030, 0.5792, -0.0011},
     {0.1639, 0.1639},
     {20, 8, 3, 9, 20, 27, 30, 30, 30, 29},
     {{50, 0.089}, {100, 0.062}, {150, 0.12}}},
    {"dull hum",
     {0.2380, -0.5292, 0.5525, -0.0002},
     {0.265, 0.208},
     {12, 0, 22, 23, 25, 24, 24, 26, 33, 37},
     {{50, 0.33}, {150, 0.019}}},
}};

// The bands reach from a centre / sqrt 2 to the centre * sqrt 2.
constexpr std::array band_centres{31.5, 63.0, 125.0, 250.0, 500.0, 1e3, 2e3, 4e3, 8e3, 16e3};

template <class Check>
void for_each_noise_table(Check check) {
    for (std::size_t i = 0; i < noise_rows.size(); ++i) {
        SCOPED_TRACE(noise_rows[i].name);
        check(noise_rows[i], widen(noise_sources()[i]));
    }
}

TEST(NoiseSources, HaveTheirLevels) {
    for_each_noise_table([](const NoiseRow& row, const Samples& x) {
        EXPECT_EQ(x.size(), 2 * second);
        expect_levels(x, row.levels, 0.001);
        for (std::size_t i = 0; i < 2; ++i)
            expect_near_ratio(rms(cut(x, i * second, second)), row.halves[i], 0.03,
                              "the RMS of second " + std::to_string(i));
    });
}

TEST(NoiseSources, StaySteadyFromFrameToFrame) {
    for_each_noise_table([](const NoiseRow&, const Samples& x) {
        for (std::size_t at = 0; at < x.size(); at += 441) {  // frames of 100 ms
            const double level = rms(cut(x, at, 4410)) / rms(x);
            EXPECT_TRUE(level > 0.8 && level < 1.5) << "at " << at << ": " << level;
        }
    });
}

TEST(NoiseSources, HaveTheirSpectra) {
    for_each_noise_table([](const NoiseRow& row, const Samples& x) {
        const Samples harmonics = amplitudes(x);
        for (const auto& [hertz, amplitude] : row.lines)
            expect_near_ratio(harmonics[2 * static_cast<std::size_t>(hertz)], amplitude, 0.05,
                              std::to_string(hertz) + " Hz");
        for (std::size_t band = 0; band < band_centres.size(); ++band) {
            const double low = std::numbers::sqrt2 * band_centres[band];  // 2 harmonics a hertz
            const double below = -10.0 * std::log10(power_share(harmonics, low, 2.0 * low));
            EXPECT_NEAR(below, row.bands[band], row.bands[band] < 30.0 ? 1.5 : 3.0)
                << "dB in the octave around " << band_centres[band];
        }
        // No whistle in the hiss: 12 dB is more than Rayleigh's spread brings about in any element.
        for (std::size_t k = 800; k + 20 < harmonics.size(); ++k) {
            const double around = rms(cut(harmonics, k - 20, 41));
            EXPECT_LT(harmonics[k], 4.0 * around) << static_cast<double>(k) / 2.0 << " Hz";
        }
    });
}

TEST(NoiseSources, LoopWithoutAClickOrAPattern) {
    for_each_noise_table([](const NoiseRow&, const Samples& x) {
        Samples sizes = steps(x);
        for (double& step : sizes) step = std::abs(step);
        const double across = sizes.back();
        std::ranges::nth_element(sizes, sizes.begin() + second);
        EXPECT_LT(across, sizes[second]) << "the median step";

        // 50 ms over the ends are as loud as 50 ms elsewhere, in the lows and up to the highs.
        Samples view = x;
        for (const char* what : {"samples", "steps", "steps of the steps"}) {
            Samples elsewhere;
            for (std::size_t at = 2205; at < x.size() - 4410; at += 2205)
                elsewhere.push_back(rms(cut(view, at, 2205)));
            const auto [least, most] = std::ranges::minmax(elsewhere);
            const double at_the_ends = rms(cut(view, x.size() - 1103, 2205));
            EXPECT_TRUE(at_the_ends >= least && at_the_ends <= most)
                << what << ": " << at_the_ends << " outside " << least << " to " << most;
            view = steps(view);
        }
    });
}

TEST(NoiseSources, HumAndHissIsSpreadLikeAGaussian) {
    const Samples x = widen(noise_sources()[0]);
    for (const auto& [deviations, share] : std::map<double, double>{
             {0.5, 0.383}, {1.0, 0.683}, {1.5, 0.866}, {2.0, 0.954}, {3.0, 0.9973}}) {
        const double bound = deviations * rms(x);
        const auto inside = std::ranges::count_if(x, [&](double v) { return std::abs(v) < bound; });
        EXPECT_NEAR(static_cast<double>(inside) / static_cast<double>(x.size()), share, 0.01)
            << deviations;
    }
}

TEST(NoiseSources, RumbleHas36SpikesMostOfThemOnAGrid) {
    const Samples x = widen(noise_sources()[3]);
    int spikes = 0;
    std::array<int, 441> places{};  // on a grid of 441 samples
    for (std::size_t i = 1; i + 1 < x.size(); ++i) {
        // 0.09 is nine times the RMS of this difference; a spike's neighbours get half of it.
        const double out = std::abs(x[i] - 0.5 * (x[i - 1] + x[i + 1]));
        if (out < 0.09) continue;
        ++spikes;
        ++places[i % 441];
        ++i;
    }
    EXPECT_EQ(spikes, 36);
    EXPECT_GE(std::ranges::max(places), 24);
}

// Two builds that disagree here would not render the same sound.
TEST(NoiseSources, AreTheSameBitsInEveryBuild) {
    EXPECT_EQ(hash(noise_sources()), 0x397a976ee44ed530U);
}

struct WobbleRow {
    const char* name;
    Levels levels;
    int crossings;
    std::vector<std::size_t> strongest;  // harmonics, in order
    std::array<double, 3> shares;        // of harmonics 1 to 4, 5 to 16, 17 and up
    std::vector<double> outline;         // every sixteenth sample
};

const std::array<WobbleRow, 4> wobble_rows{{
    {"three swings",
     {0.2992, -0.6273, 0.9500, 0.0},
     6,
     {3, 1, 4},
     {0.86, 0.10, 0.04},
     {0.30,  0.14,  -0.15, -0.25, 0.09, 0.45,  0.27,  0.17,  0.21,  0.23,  0.26, -0.27,
      -0.50, -0.31, -0.09, 0.09,  0.04, -0.11, -0.34, -0.61, -0.37, -0.07, 0.25, 0.35}},
    {"two pulses",
     {0.3620, -0.9500, 0.5067, 0.0},
     12,
     {3, 1, 4},
     {0.67, 0.27, 0.06},
     {0.06, 0.14, 0.16,  0.13,  0.19,  0.14, 0.03, 0.13, -0.09, 0.03, -0.01, 0.01,
      0.07, 0.18, -0.46, -0.95, -0.95, 0.51, 0.51, 0.01, -0.03, 0.15, 0.04,  0.01}},
    {"rough curve", {0.4307, -0.6964, 0.9500, 0.0}, 44, {10, 14, 1}, {0.08, 0.37, 0.55}, {}},
    {"white noise", {0.3515, -1.0, 1.0, 0.0}, 186, {}, {0.01, 0.02, 0.97}, {}},
}};

TEST(WobbleSources, HaveTheirLevelsHarmonicsAndOutlines) {
    for (std::size_t i = 0; i < wobble_rows.size(); ++i) {
        const WobbleRow& row = wobble_rows[i];
        SCOPED_TRACE(row.name);
        const Samples x = widen(wobble_sources()[i]);
        ASSERT_EQ(x.size(), 384U);
        expect_levels(x, row.levels, 0.011);

        int crossings = 0;
        for (std::size_t at = 0; at < x.size(); ++at) {
            EXPECT_NE(x[at], 0.0) << "would leave the number of crossings open, at " << at;
            crossings += (x[at] < 0.0) != (x[(at + 1) % x.size()] < 0.0);
        }
        EXPECT_EQ(crossings, row.crossings);

        const Samples harmonics = amplitudes(x);
        std::vector<std::size_t> ranks(harmonics.size());
        std::iota(ranks.begin(), ranks.end(), 0U);
        std::ranges::sort(ranks, std::greater{}, [&](std::size_t k) { return harmonics[k]; });
        if (row.strongest.empty()) {
            const auto first = static_cast<double>(ranks[0]);
            EXPECT_LT(power_share(harmonics, first, first + 1.0), 0.02) << "none stands out";
        }
        for (std::size_t k = 0; k < row.strongest.size(); ++k)
            EXPECT_EQ(ranks[k], row.strongest[k]) << "of rank " << k;
        constexpr std::array<double, 4> borders{1, 5, 17, 193};
        for (std::size_t k = 0; k < row.shares.size(); ++k)
            EXPECT_NEAR(power_share(harmonics, borders[k], borders[k + 1]), row.shares[k], 0.02)
                << "from harmonic " << borders[k];

        if (i < 3) {
            EXPECT_LE(std::abs(x.front() - x.back()), 0.0103) << "from the end to the start";
        }
        for (std::size_t k = 0; k < row.outline.size(); ++k)
            EXPECT_NEAR(x[16 * k], row.outline[k], 0.02) << "at " << 16 * k;
    }
}

TEST(WobbleSources, JumpWhereTheyShould) {
    const Samples swings = widen(wobble_sources()[0]), pulses = widen(wobble_sources()[1]);
    const auto between = [](const Samples& x, std::size_t first, std::size_t last, double value) {
        for (std::size_t i = first; i <= last; ++i) EXPECT_NEAR(x[i], value, 0.02) << i;
    };
    const auto high = std::ranges::count_if(swings, [](double x) { return x > 0.65; });
    EXPECT_EQ(high, 5) << "the spike's samples";
    EXPECT_EQ(std::ranges::max_element(swings) - swings.begin(), 360);
    between(pulses, 233, 267, -0.95);
    EXPECT_GT(pulses[232], -0.93) << "35 samples, no more";
    EXPECT_NEAR(pulses[268] - pulses[267], 1.44, 0.02);
    between(pulses, 268, 300, 0.4967);  // about 0.5
    EXPECT_NEAR(pulses[301], 0.0, 0.02);
    for (std::size_t i = 0; i <= 208; ++i) EXPECT_NEAR(pulses[i], 0.1, 0.2) << i;
}

TEST(WobbleSources, AreTheSameBitsInEveryBuild) {
    EXPECT_EQ(hash(wobble_sources()), 0x368e21f538b4f4deU);
}

}  // namespace
}  // namespace orvane::blocks::vesk
