// The peaks of a stereo sound over time.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "tools/picture/columns.h"

namespace program {

// Linear; left, right.
struct level {
    std::array<float, 2> peak{};

    void merge(const level& later, double) {
        for (std::size_t c = 0; c < 2; ++c) peak[c] = std::max(peak[c], later.peak[c]);
    }
};

class levels {
public:
    // Interleaved; a single channel counts for both.
    void add(const float* interleaved, std::int64_t frames, std::size_t channels) {
        for (std::int64_t i = 0; i < frames; ++i, interleaved += channels)
            columns_.add({{std::fabs(interleaved[0]), std::fabs(interleaved[channels - 1])}}, 1);
    }
    const columns<level>& over_time() const { return columns_; }

private:
    columns<level> columns_{3000, 1};
};

}  // namespace program
