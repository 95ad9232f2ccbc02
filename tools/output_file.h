// Writes the stereo sound file of a rendering; it appears under its path only when complete.
#pragma once

#include <cstdint>
#include <string>

#include "tools/input_file.h"
#include "tools/unfinished_file.h"

namespace program {

struct output_format {
    int code = 0;                  // of the sound file library
    std::int64_t frame_bytes = 0;  // of both channels, before any packing
    bool is_integer = false;       // samples are clipped at full scale
    bool has_4_gib_limit = false;
    bool can_be_empty = true;  // a file without frames can be read
};

// By the suffix of path; subtype is "float", "24", "16" or "" for the format's default. Throws
// usage_error.
output_format output_format_of(const std::string& path, const std::string& subtype);

class output_file {
public:
    output_file(const std::string& path, const output_format& format, int rate, bool replace);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    void check_length(std::int64_t frames) const;  // throws failure when the format can't hold them
    void write(const float* interleaved, std::int64_t frames);  // throws failure
    void finish();                                              // throws failure

    std::int64_t frames() const { return frames_; }
    std::int64_t clipped() const { return clipped_; }  // samples above full scale, clipped
    double peak() const { return peak_; }              // linear, of all written samples

private:
    void measure_levels(const float* interleaved, std::int64_t samples);
    [[noreturn]] void fail() const;

    std::string path_;
    output_format format_;
    unfinished_file bytes_;
    SNDFILE* file_ = nullptr;
    std::int64_t frames_ = 0;
    std::int64_t clipped_ = 0;
    double peak_ = 0;
};

}  // namespace program
