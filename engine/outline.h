// A curve drawn through a few points of one period of a shape.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orvane::blocks::vesk {

struct OutlinePoint {
    double at;  // sample
    double value;
};

// `points` rise in `at` within the period of `length` samples, the first at 0; the last leads back
// to the first. Between two points the curve never leaves their range, so that the extremes and the
// crossings of zero are those of the points, and points one sample apart make a clean jump.
std::vector<double> draw_outline(std::span<const OutlinePoint> points, std::size_t length);

}  // namespace orvane::blocks::vesk
