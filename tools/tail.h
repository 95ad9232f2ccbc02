// Decides how long to render after the end of the input.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>

namespace program {

class tail {
public:
    static constexpr float silence = 1e-4f;    // -80 dBFS
    static constexpr double max_seconds = 60;  // of an automatic tail

    // seconds unset: until the output is silent for silent_seconds, at most a minute.
    tail(std::optional<double> seconds, double silent_seconds, int rate);

    void input_ends(std::int64_t frame);                          // the tail begins at this frame
    void measure(const float* interleaved, std::int64_t frames);  // the next frames of output

    // The first frame that is not written; the maximum of its type while unknown.
    std::int64_t end() const { return end_; }
    bool cut() const { return automatic_ && silent_ < silent_end_; }  // after the end: still loud

private:
    bool automatic_;
    std::int64_t length_;        // frames; of an automatic tail the maximum
    std::int64_t silent_end_;    // frames of silence that end an automatic tail
    std::int64_t silent_ = 0;    // frames of silence so far
    std::int64_t measured_ = 0;  // frames
    std::int64_t begin_ = std::numeric_limits<std::int64_t>::max();
    std::int64_t end_ = std::numeric_limits<std::int64_t>::max();
};

}  // namespace program
