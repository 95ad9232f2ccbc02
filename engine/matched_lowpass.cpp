#include "engine/matched_lowpass.h"

#include <cmath>

namespace orvane::blocks::vesk {

// With w the angle per sample and W = tan(w / 2), which is 1 at a quarter of the rate, and
// G = (coefficient / 2)^2 the filter's power response is (G + high_gain^2 W^2) / (G + W^2); the
// analogue one is x / (x + w^2). The two agree at w = pi / 2 and in their w^2 terms at 0.
MatchedLowpass design_matched_lowpass(Pair cutoff, Pair rate) {
    constexpr float two_pi = 6.2831855f;
    constexpr float k = 2.467401f;  // the square of pi/2
    const Pair r = cutoff * two_pi / rate;
    const Pair x = r * r;
    const Pair a = k / (x + k);
    const Pair g2 = (x * (a * 4.0f)) / (4.0f - a * x);  // 4 G
    const Pair e = x / (x + k);                         // the response wanted at w = pi / 2
    const Pair high2 = (e - 1.0f) * 0.25f * g2 + e;
    MatchedLowpass filter;
    filter.coefficient = Pair{std::sqrt(g2[0]), std::sqrt(g2[1])};
    filter.high_gain = Pair{std::sqrt(high2[0]), std::sqrt(high2[1])};
    return filter;
}

}  // namespace orvane::blocks::vesk
