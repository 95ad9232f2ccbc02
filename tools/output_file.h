// The stereo sound file that a rendering makes; it appears at its place only when it is whole.
#pragma once

#include <cstdint>
#include <string>

#include "tools/input_file.h"
#include "tools/unfinished_file.h"

namespace program {

struct output_format {
    int code = 0;                  // of the sound file library
    std::int64_t frame_bytes = 0;  // of both channels, before any packing
    bool is_integer = false;       // full scale is the end
    bool has_4_gib_limit = false;
    bool holds_no_frames = true;  // an empty file can be read again
};

// By suffix; subtype is "float", "24", "16" or "" for the usual one. Throws usage_error.
output_format output_format_of(const std::string& place, const std::string& subtype);

class output_file {
public:
    output_file(const std::string& place, const output_format& format, int rate, bool replace);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    void expect(std::int64_t frames) const;  // throws failure when so many don't fit the format
    void write(const float* interleaved, std::int64_t frames);  // throws failure
    void finish();                                              // throws failure

    std::int64_t frames() const { return frames_; }
    std::int64_t clipped() const { return clipped_; }  // samples beyond full scale, cut to it
    double peak() const { return peak_; }              // linear, of what was written

private:
    void note_levels(const float* interleaved, std::int64_t samples);
    [[noreturn]] void fail() const;

    std::string place_;
    output_format format_;
    unfinished_file bytes_;
    SNDFILE* file_ = nullptr;
    std::int64_t frames_ = 0;
    std::int64_t clipped_ = 0;
    double peak_ = 0;
};

}  // namespace program
