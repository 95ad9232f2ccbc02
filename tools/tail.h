// How long the effect rings on behind the end of its input.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>

namespace program {

class tail {
public:
    // seconds unset: until a full second stays quiet, a minute at most.
    tail(std::optional<double> seconds, int rate);

    void input_ends(std::int64_t frame);                       // from here on it is the tail
    void hear(const float* interleaved, std::int64_t frames);  // what follows what was heard

    // The first frame that is not written any more; far away as long as it isn't known.
    std::int64_t end() const { return end_; }

private:
    static constexpr float quiet = 1e-4f;  // -80 dBFS
    bool automatic_;
    std::int64_t length_;  // frames; the longest for automatic ones
    std::int64_t silence_needed_;
    std::int64_t silence_ = 0;
    std::int64_t heard_ = 0;
    std::int64_t begin_ = std::numeric_limits<std::int64_t>::max();
    std::int64_t end_ = std::numeric_limits<std::int64_t>::max();
};

}  // namespace program
