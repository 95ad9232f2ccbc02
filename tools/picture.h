// A picture of a rendering: the input in grey behind the output in colour, a lane for each channel,
// the time below and a mark for every event. Memory stays the same however long the file is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/score.h"

namespace program {

// The lowest and highest sample of each stretch of time. When the stretches run out, two become
// one, so that between half of them and all are in use.
class peak_columns {
public:
    struct column {
        float low = 0;
        float high = 0;
    };
    static constexpr std::size_t most = 2400;  // stretches; even

    explicit peak_columns(std::size_t channels) : lanes_(channels) {}

    void add(const float* interleaved, std::int64_t frames, std::size_t stride);

    const std::vector<column>& lane(std::size_t channel) const { return lanes_[channel]; }
    std::int64_t column_frames() const { return column_frames_; }  // a power of two
    float peak() const;

private:
    void join_pairs();
    std::vector<std::vector<column>> lanes_;
    std::int64_t column_frames_ = 1;
    std::int64_t in_last_ = 0;  // frames in the last stretch
};

class picture {
public:
    explicit picture(std::string file);  // .png or .svg; throws usage_error

    void add(const float* in, int channels, std::int64_t in_frames, const float* out,
             std::int64_t frames);
    void write(int rate, std::int64_t frames, const score& events) const;  // throws failure

private:
    std::string file_;
    bool is_svg_;
    peak_columns input_{2};
    peak_columns output_{2};
};

}  // namespace program
