// One period of a shape, interpolated from a few points.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orvane::blocks::vesk {

struct OutlinePoint {
    double at;  // sample
    double value;
};

// `points` have rising `at`, the first 0, all below `length`, the period in samples; after the last
// one the first follows. The interpolation is monotone between two points, so extremes and zero
// crossings are those of the points, and points one sample apart make a jump without overshoot.
std::vector<double> draw_outline(std::span<const OutlinePoint> points, std::size_t length);

}  // namespace orvane::blocks::vesk
