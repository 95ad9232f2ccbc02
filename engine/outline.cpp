#include "engine/outline.h"

namespace orvane::blocks::vesk {
namespace {

// The tangent between two chords: their harmonic mean, 0 at a peak or a dip. After Fritsch
// and Butland, "A method for constructing local monotone piecewise cubic interpolants", SIAM J.
// Sci. Stat. Comput. 5(2), 1984, without the weights for uneven spacing.
double tangent(double before, double after) {
    return before * after > 0.0 ? 2.0 * before * after / (before + after) : 0.0;
}

}  // namespace

std::vector<double> draw_outline(std::span<const OutlinePoint> points, std::size_t length) {
    const std::size_t n = points.size();
    const auto period = static_cast<double>(length);
    // Point i - 1 of the periodic curve, for i from 0 to n + 2.
    const auto point = [&](std::size_t i) -> OutlinePoint {
        if (i == 0) return {points[n - 1].at - period, points[n - 1].value};
        if (i <= n) return points[i - 1];
        return {points[i - 1 - n].at + period, points[i - 1 - n].value};
    };
    const auto chord = [&](std::size_t i) {
        return (point(i + 1).value - point(i).value) / (point(i + 1).at - point(i).at);
    };

    std::vector<double> samples;
    samples.reserve(length);
    std::size_t i = 1;  // of the point at or before the sample
    for (std::size_t at = 0; at < length; ++at) {
        const auto x = static_cast<double>(at);
        while (point(i + 1).at <= x) ++i;
        const double width = point(i + 1).at - point(i).at;
        const double t = (x - point(i).at) / width;
        const double rise = chord(i) * width;
        const double start = tangent(chord(i - 1), chord(i)) * width;
        const double end = tangent(chord(i), chord(i + 1)) * width;
        // The Hermite cubic with these two values and two tangents.
        const double bend = start + end - 2.0 * rise;
        samples.push_back(point(i).value + t * (start + t * (rise - start - bend + t * bend)));
    }
    return samples;
}

}  // namespace orvane::blocks::vesk
