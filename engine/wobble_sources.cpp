// The four wobble tables, from smooth to rough: two drawn shapes and two loops of noise.
#include "engine/outline.h"
#include "engine/random_loop.h"
#include "engine/sample_sources.h"

namespace orvane::blocks::vesk {
namespace {

constexpr std::size_t length = 384;
constexpr double rate = 384.0;  // Hz; a frequency is then the number of periods in the loop

// Three broad waves with a spike of five samples around 360. A point at every sixteenth sample; the
// others shape the flanks.
constexpr OutlinePoint three_waves[] = {
    {0, 0.30},    {16, 0.14},   {32, -0.15},    {40, -0.28},  {48, -0.25},  {64, 0.09},
    {70, 0.33},   {80, 0.45},   {88, 0.42},     {96, 0.27},   {112, 0.17},  {128, 0.21},
    {144, 0.23},  {160, 0.26},  {165, 0.08},    {171, -0.22}, {176, -0.27}, {186, -0.45},
    {192, -0.50}, {208, -0.31}, {224, -0.09},   {240, 0.09},  {256, 0.04},  {272, -0.11},
    {288, -0.34}, {304, -0.61}, {307, -0.6273}, {320, -0.37}, {336, -0.07}, {352, 0.25},
    {357, 0.32},  {358, 0.86},  {359, 0.94},    {360, 0.95},  {361, 0.94},  {362, 0.86},
    {363, 0.34},  {368, 0.35},  {383, 0.305},
};

// A quiet part, then flat pulses of 35 samples down and 33 up, with jumps of one sample between.
constexpr OutlinePoint two_pulses[] = {
    {0, 0.07},     {16, 0.15},    {32, 0.17},    {42, 0.21},   {48, 0.14},   {64, 0.20},
    {75, 0.21},    {80, 0.15},    {96, 0.035},   {102, -0.01}, {112, 0.14},  {128, -0.085},
    {144, 0.032},  {160, -0.018}, {176, 0.021},  {192, 0.08},  {208, 0.18},  {213, 0.02},
    {219, -0.32},  {224, -0.465}, {232, -0.925}, {233, -0.95}, {267, -0.95}, {268, 0.49},
    {272, 0.5067}, {288, 0.5067}, {300, 0.505},  {301, 0.005}, {304, 0.02},  {320, -0.022},
    {336, 0.16},   {347, 0.14},   {352, 0.045},  {368, 0.01},  {374, -0.01}, {383, 0.065},
};

// The seeds of these two are the best of several hundred thousand: the target number of zero
// crossings, peaks near the target extremes and, for the rough curve, a small step from the end to
// the start.
constexpr SpectrumPoint rough_curve_noise[] = {
    {2, 0.063},  {4, 0.063},  {5, 0.093},   {17, 0.097},
    {35, 0.085}, {50, 0.032}, {100, 0.010}, {191, 0.003},
};
constexpr SpectrumPoint rough_curve_lines[] = {{1, 0.145}, {10, 0.195}, {14, 0.172}};
constexpr RandomLoop rough_curve{.rate = rate,
                                 .seed = 124324,
                                 .mean = 0.0,
                                 .spectrum = rough_curve_noise,
                                 .lines = rough_curve_lines};

constexpr SpectrumPoint white_spectrum[] = {
    {1, 0.025}, {4, 0.025}, {5, 0.0205}, {16, 0.0205}, {17, 0.0367}, {191, 0.0367},
};
constexpr RandomLoop white_noise{
    .rate = rate, .seed = 100447, .mean = 0.0, .spectrum = white_spectrum, .lines = {}};

std::array<std::vector<float>, 4> make_wobble_sources() {
    const std::vector<Rotor> circle = unit_circle(length);
    auto rough = make_random_loop(rough_curve, circle);
    set_extremes(rough, -0.6964, 0.9500);
    auto white = make_random_loop(white_noise, circle);
    set_extremes(white, -1.0, 32767.0 / 32768.0);
    return {to_16_bits(draw_outline(three_waves, length)),
            to_16_bits(draw_outline(two_pulses, length)), to_16_bits(rough), to_16_bits(white)};
}

const std::array<std::vector<float>, 4> tables = make_wobble_sources();

}  // namespace

const std::array<std::vector<float>, 4>& wobble_sources() noexcept {
    return tables;
}

}  // namespace orvane::blocks::vesk
