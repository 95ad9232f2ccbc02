// A picture of a rendering: the input in grey behind the output in colour, a strip for each
// channel, the time below and a mark for every event. Memory use does not grow with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/score.h"

namespace program {

// Minimum and maximum of the samples in each column of frames. When all columns are used,
// neighbours are merged and a column spans twice as many frames, so at least half of them stay in
// use.
class peak_columns {
public:
    struct column {
        float min = 0;
        float max = 0;
    };
    static constexpr std::size_t max_columns = 2400;  // even

    explicit peak_columns(std::size_t channels) : channels_(channels) {}

    void add(const float* interleaved, std::int64_t frames, std::size_t stride);

    const std::vector<column>& channel(std::size_t index) const { return channels_[index]; }
    std::int64_t column_frames() const { return column_frames_; }  // a power of two
    float peak() const;

private:
    void merge_neighbours();
    std::vector<std::vector<column>> channels_;
    std::int64_t column_frames_ = 1;
    std::int64_t last_frames_ = 0;  // frames in the last column
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
