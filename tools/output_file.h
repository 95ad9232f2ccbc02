// Writes the stereo sound file of a rendering; it appears under its path only when complete.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tools/byte_sink.h"
#include "tools/output_format.h"
#include "tools/quantiser.h"
#include "tools/sound_tags.h"

namespace program {

class output_file {
public:
    // path: "-" is the standard output, "" no output at all. max_frames: an upper bound of the
    // length, if known. A WAV file that may grow above 4 GiB becomes RF64, the same with lengths of
    // 64 bits, if it does. dithered: if of 16 bits.
    output_file(const std::string& path, const output_format& format, int rate, bool replace,
                std::optional<std::int64_t> max_frames, bool dithered = true);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    void set(const sound_tags& tags) { set_tags(file_, tags); }  // before the first frame
    void write(const float* interleaved, std::int64_t frames);   // throws failure
    void finish();                                               // throws failure
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
    std::unique_ptr<byte_sink> bytes_;
    SNDFILE* file_ = nullptr;
    std::int64_t frames_ = 0;
    std::int64_t clipped_ = 0;
    double peak_ = 0;
    std::optional<quantiser> integers_;  // for integer formats
};

}  // namespace program
