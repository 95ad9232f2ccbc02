#include "tools/picture/time_axis.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "tools/text.h"

namespace program {

namespace {

constexpr double most_ticks = 12;

// 1, 2 or 5 times a power of ten; of a minute or more also what divides minutes and hours.
double tick_step(double seconds) {
    for (const double step : {10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0})
        if (seconds >= 60 && seconds / step <= most_ticks) return step;
    const double power = std::pow(10, std::floor(std::log10(seconds / most_ticks)));
    for (const double step : {1.0, 2.0, 5.0, 10.0})
        if (seconds / (step * power) <= most_ticks) return step * power;
    return seconds;
}

std::string two_digits(long n) {
    return (n < 10 ? "0" : "") + std::to_string(n);
}

std::string time_text(double seconds, double step, bool in_minutes) {
    if (!in_minutes) {
        const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
        return fixed_text(seconds, decimals) + " s";
    }
    const long whole = std::lround(seconds);
    const std::string end = two_digits(whole % 60);
    return whole < 3600
               ? std::to_string(whole / 60) + ":" + end
               : std::to_string(whole / 3600) + ":" + two_digits(whole / 60 % 60) + ":" + end;
}

}  // namespace

std::vector<time_tick> time_ticks(double seconds) {
    std::vector<time_tick> ticks;
    const double step = tick_step(seconds);
    for (int i = 0; i * step <= seconds * (1 + 1e-9); ++i)
        ticks.push_back({i * step, time_text(i * step, step, seconds >= 60)});
    return ticks;
}

}  // namespace program
