// Writes the stereo sound file of a rendering; it appears under its path only when complete.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/input_file.h"
#include "tools/unfinished_file.h"

namespace program {

struct output_format {
    int code = 0;                  // of the sound file library
    std::int64_t frame_bytes = 0;  // of both channels, before any packing
    bool is_integer = false;       // samples are clipped at full scale
    bool has_float = true;         // of the format, with another sample type
    bool can_be_empty = true;      // a file without frames can be read
};

// By the suffix of path; subtype is "float", "24", "16" or "" for the format's default. Throws
// usage_error.
output_format output_format_of(const std::string& path, const std::string& subtype);

class output_file {
public:
    // max_frames: an upper bound of the length, if known. A WAV file that may grow above 4 GiB
    // becomes RF64, the same with lengths of 64 bits, if it does.
    output_file(const std::string& path, const output_format& format, int rate, bool replace,
                std::optional<std::int64_t> max_frames);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    void write(const float* interleaved, std::int64_t frames);  // throws failure
    void finish();                                              // throws failure
    void finish_as(const std::string& path);  // under another name in the same folder

    std::int64_t frames() const { return frames_; }
    std::int64_t clipped() const { return clipped_; }  // samples above full scale, clipped
    const output_format& format() const { return format_; }
    double peak() const { return peak_; }  // linear, of all written samples

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
