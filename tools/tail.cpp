#include "tools/tail.h"

#include <cmath>

namespace program {

tail::tail(std::optional<double> seconds, double silent_seconds, int rate)
    : automatic_(!seconds),
      length_(std::llround(seconds.value_or(max_seconds) * rate)),
      silent_end_(std::llround(silent_seconds * rate)) {}

void tail::input_ends(std::int64_t frame) {
    begin_ = frame;
    end_ = frame + length_;
}

void tail::measure(const float* interleaved, std::int64_t frames) {
    for (std::int64_t i = 0; i < frames; ++i, ++measured_) {
        if (!automatic_ || measured_ < begin_ || measured_ >= end_) continue;
        const bool loud = std::fabs(interleaved[2 * i]) >= silence ||
                          std::fabs(interleaved[2 * i + 1]) >= silence;
        silent_ = loud ? 0 : silent_ + 1;
        if (silent_ == silent_end_) end_ = measured_ + 1;
    }
}

}  // namespace program
