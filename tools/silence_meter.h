// How much of a signal is silent.
#pragma once

#include <cmath>
#include <cstdint>

#include "tools/tail.h"

namespace program {

struct silence_meter {
    std::int64_t frames = 0;
    std::int64_t silent_frames = 0;  // with every channel below -80 dBFS
    std::int64_t silent_end = 0;     // those after the last other one

    void measure(const float* interleaved, std::int64_t count, int channels) {
        for (std::int64_t i = 0; i < count; ++i, interleaved += channels) {
            const bool silent = std::fabs(interleaved[0]) < tail::silence &&
                                std::fabs(interleaved[channels - 1]) < tail::silence;
            silent_frames += silent;
            silent_end = silent ? silent_end + 1 : 0;
        }
        frames += count;
    }
    // 0 to 1, up to the last frame that is not silent; 1 when there is none.
    double share() const {
        if (silent_frames == frames) return frames > 0 ? 1 : 0;
        return static_cast<double>(silent_frames - silent_end) /
               static_cast<double>(frames - silent_end);
    }
};

}  // namespace program
