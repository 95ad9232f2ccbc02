// The five noise tables: a spectrum of noise with mains harmonics in it.
#include <random>
#include <utility>

#include "engine/random_loop.h"
#include "engine/sample_sources.h"

namespace orvane::blocks::vesk {
namespace {

constexpr std::size_t length = 88200;
constexpr double rate = 44100.0;  // Hz; harmonics lie half a hertz apart

// The levels are fitted, octave by octave, to each table's target spectrum. The seeds are the best
// of some thousand: peaks near the target extremes, even levels of 100 ms frames, and a step from
// the loop's end to its start that is smaller than most steps inside it.
constexpr SpectrumPoint hum_and_hiss_noise[] = {
    {6, 0.0},        {10, 8.79e-3},   {18, 8.79e-3},   {24, 1.17e-3},    {31.5, 1.17e-3},
    {63, 1.32e-3},   {125, 9.05e-4},  {250, 8.44e-4},  {500, 7.20e-4},   {1000, 8.08e-4},
    {2000, 3.57e-4}, {4000, 3.42e-4}, {8000, 2.38e-4}, {16000, 8.65e-5}, {22050, 7.78e-5},
};
constexpr SpectrumPoint hum_and_hiss_lines[] = {{50, 0.035}, {150, 0.047}};
constexpr RandomLoop hum_and_hiss{.rate = rate,
                                  .seed = 2290,
                                  .mean = 0.0017,
                                  .spectrum = hum_and_hiss_noise,
                                  .lines = hum_and_hiss_lines};

constexpr SpectrumPoint bright_hiss_noise[] = {
    {6, 0.0},        {10, 2.50e-3},    {18, 2.50e-3},    {26, 2.22e-3},   {36, 2.22e-3},
    {48, 2.60e-3},   {80, 2.60e-3},    {100, 2.26e-3},   {160, 2.26e-3},  {200, 6.59e-4},
    {300, 6.59e-4},  {500, 1.55e-4},   {1000, 1.58e-4},  {2000, 1.95e-4}, {4000, 3.00e-4},
    {8000, 3.03e-4}, {16000, 1.75e-4}, {22050, 1.49e-4},
};
constexpr SpectrumPoint bright_hiss_lines[] = {{50, 0.030}, {100, 0.015}, {150, 0.020}};
constexpr RandomLoop bright_hiss{.rate = rate,
                                 .seed = 526,
                                 .mean = 0.0003,
                                 .spectrum = bright_hiss_noise,
                                 .lines = bright_hiss_lines};

constexpr SpectrumPoint strong_hum_noise[] = {
    {25, 0.0},        {27, 2.92e-2},    {33, 2.92e-2},    {36, 8.99e-4},
    {88, 8.99e-4},    {125, 1.22e-3},   {250, 9.42e-4},   {500, 8.51e-4},
    {1000, 2.90e-4},  {2000, 1.74e-4},  {4000, 9.93e-5},  {8000, 2.41e-5},
    {10000, 2.41e-5}, {12000, 3.23e-4}, {17000, 3.23e-4}, {22050, 1.29e-4},
};
constexpr SpectrumPoint strong_hum_lines[] = {
    {50, 0.519}, {150, 0.0353}, {250, 0.0353}, {350, 0.0354}};
constexpr RandomLoop strong_hum{.rate = rate,
                                .seed = 11425,
                                .mean = 0.0085,
                                .spectrum = strong_hum_noise,
                                .lines = strong_hum_lines};

constexpr SpectrumPoint rumble_noise[] = {
    {6, 0.0},        {9, 1.47e-2},     {18, 1.47e-2},    {24, 3.33e-3},   {40, 3.33e-3},
    {60, 1.70e-3},   {100, 8.13e-3},   {160, 8.94e-3},   {190, 5.42e-3},  {300, 4.34e-3},
    {400, 9.82e-4},  {500, 6.54e-4},   {1000, 2.30e-4},  {2000, 1.33e-4}, {4000, 9.80e-5},
    {8000, 6.59e-5}, {16000, 5.29e-5}, {22050, 5.29e-5},
};
constexpr SpectrumPoint rumble_lines[] = {{50, 0.089}, {100, 0.0619}, {150, 0.120}};
constexpr RandomLoop rumble{
    .rate = rate, .seed = 2781, .mean = -0.0011, .spectrum = rumble_noise, .lines = rumble_lines};

constexpr SpectrumPoint dull_hum_noise[] = {
    {24, 0.0},       {26, 1.52e-2},   {36, 1.52e-2},    {42, 7.49e-4},    {88, 7.49e-4},
    {125, 1.64e-3},  {250, 1.31e-3},  {500, 6.31e-4},   {1000, 5.86e-4},  {2000, 3.99e-4},
    {4000, 2.20e-4}, {8000, 4.28e-5}, {16000, 3.62e-5}, {22050, 1.81e-5},
};
constexpr SpectrumPoint dull_hum_lines[] = {{50, 0.324}, {150, 0.0187}};
constexpr RandomLoop dull_hum{.rate = rate,
                              .seed = 2429,
                              .mean = -0.0002,
                              .spectrum = dull_hum_noise,
                              .lines = dull_hum_lines};

// The third and the fifth table are louder in their first second. The level changes slowly enough
// for the loop's ends not to be heard.
constexpr double strong_hum_tilt = 0.154;
constexpr double dull_hum_tilt = 0.118;
constexpr std::size_t tilt_fade = 4410;  // samples

// Clicks of a supply that switches a hundred times a second: one in each of 36 equal segments, so
// that they are spread evenly without a rhythm. Every fourth is at no switching instant.
constexpr std::size_t spike_count = 36;
constexpr std::size_t switching_period = 441;  // samples
constexpr double min_spike = 0.12;             // the hiss is at 0.01
constexpr double spike_range = 0.04;

void add_spikes(std::vector<double>& loop) {
    std::mt19937 random(1);
    const std::size_t segment = loop.size() / spike_count;
    for (std::size_t i = 0; i < spike_count; ++i) {
        std::size_t at = i * segment + random() % segment;
        if (i % 4 != 3) at -= at % switching_period;
        const double height =
            min_spike + spike_range * static_cast<double>(random() % 1024) / 1024.0;
        loop[at] += random() % 2 == 1 ? height : -height;
    }
}

std::array<std::vector<float>, 5> make_noise_sources() {
    const std::vector<Rotor> circle = unit_circle(length);
    const auto finish = [](std::vector<double> loop, double lowest, double highest) {
        set_extremes(loop, lowest, highest);
        return to_16_bits(loop);
    };

    auto strong = make_random_loop(strong_hum, circle);
    tilt_halves(strong, strong_hum_tilt, tilt_fade);
    auto spiky = make_random_loop(rumble, circle);
    add_spikes(spiky);
    auto dull = make_random_loop(dull_hum, circle);
    tilt_halves(dull, dull_hum_tilt, tilt_fade);
    return {finish(make_random_loop(hum_and_hiss, circle), -0.2824, 0.2846),
            finish(make_random_loop(bright_hiss, circle), -0.3707, 0.2985),
            finish(std::move(strong), -0.9500, 0.8259), finish(std::move(spiky), -0.7030, 0.5792),
            finish(std::move(dull), -0.5292, 0.5525)};
}

const std::array<std::vector<float>, 5> tables = make_noise_sources();

}  // namespace

const std::array<std::vector<float>, 5>& noise_sources() noexcept {
    return tables;
}

}  // namespace orvane::blocks::vesk
