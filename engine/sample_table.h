// A looped recording with guard samples, so that no interpolated read has to wrap.
#pragma once

#include <cstdint>
#include <vector>

namespace orvane::blocks::vesk {

struct SampleTable {
    std::vector<float> samples;  // x[n-1], x[0], ... x[n-1], x[0], x[1]
    std::uint64_t length = 0;    // n, without the guard samples
    double sample_rate = 0.0;    // Hz at which the table counts as recorded

    SampleTable(const std::vector<float>& source, double rate);  // an empty source is one zero
};

}  // namespace orvane::blocks::vesk
