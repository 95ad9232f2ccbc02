#include "engine/rotor.h"

#include <numbers>

namespace orvane::blocks::vesk {
namespace {

// The power series of sine and cosine. Up to an eighth of a turn the terms left out are below half
// a unit in the last place.
Rotor point_at(double angle) {
    const double square = angle * angle;
    double sine = 1.0, cosine = 1.0;
    for (int i = 18; i >= 2; i -= 2) {
        cosine = 1.0 - cosine * square / ((i - 1) * i);
        sine = 1.0 - sine * square / (i * (i + 1));
    }
    return {cosine, angle * sine};
}

}  // namespace

std::vector<Rotor> unit_circle(std::size_t n) {
    std::vector<Rotor> circle(n);
    const double step = 2.0 * std::numbers::pi / static_cast<double>(n);
    for (std::size_t k = 0; k <= n / 8; ++k) {
        const Rotor point = point_at(step * static_cast<double>(k));
        circle[k] = point;
        circle[n / 4 - k] = {point.im, point.re};
    }
    for (std::size_t k = n / 4; k < n; ++k) circle[k] = quarter_turn(circle[k - n / 4]);
    return circle;
}

}  // namespace orvane::blocks::vesk
