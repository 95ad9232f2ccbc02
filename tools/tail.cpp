#include "tools/tail.h"

#include <cmath>

namespace program {

namespace {

constexpr double longest_tail = 60;  // s
constexpr double silent_end = 1;     // s

}  // namespace

tail::tail(std::optional<double> seconds, int rate)
    : automatic_(!seconds),
      length_(std::llround(seconds.value_or(longest_tail) * rate)),
      silence_needed_(std::llround(silent_end * rate)) {}

void tail::input_ends(std::int64_t frame) {
    begin_ = frame;
    end_ = frame + length_;
}

void tail::hear(const float* interleaved, std::int64_t frames) {
    for (std::int64_t i = 0; i < frames; ++i, ++heard_) {
        if (!automatic_ || heard_ < begin_ || heard_ >= end_) continue;
        const bool loud =
            std::fabs(interleaved[2 * i]) >= quiet || std::fabs(interleaved[2 * i + 1]) >= quiet;
        silence_ = loud ? 0 : silence_ + 1;
        if (silence_ == silence_needed_) end_ = heard_ + 1;
    }
}

}  // namespace program
