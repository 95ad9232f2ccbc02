// A sound file or a stream of one, read from front to back as 32-bit floats.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/sound_tags.h"

namespace program {

struct sound_file_closer {
    void operator()(SNDFILE* file) const noexcept { sf_close(file); }
};
using sound_file = std::unique_ptr<SNDFILE, sound_file_closer>;

class input_file {
public:
    // name: "-" is the standard input. picked: the channels to read, one or two, from 1 on; none
    // for all. Throws failure.
    explicit input_file(const std::string& name, std::vector<int> picked = {});

    int rate() const { return info_.samplerate; }                      // Hz
    int channels() const { return static_cast<int>(picked_.size()); }  // 1 or 2
    std::optional<std::int64_t> header_frames() const;  // its length, if the header has one
    const std::string& shown_name() const { return shown_name_; }

    sound_tags tags() const { return tags_of(file_.get()); }

    // Returns how many frames it read, fewer than requested only at the end of the file. Samples
    // that are not finite become 0 and are counted.
    std::int64_t read(float* interleaved, std::int64_t frames);

    std::int64_t frames_read() const { return frames_read_; }
    std::int64_t not_finite() const { return not_finite_; }  // samples so far
    // After the last frame: what is wrong with the file, "" for nothing. It ends before the length
    // in its header, or its data can't be decoded.
    std::string damage() const;

private:
    std::int64_t read_picked(float* interleaved, std::int64_t frames);

    std::string shown_name_;
    SF_INFO info_{};
    sound_file file_;
    std::vector<int> picked_;
    std::vector<float> all_channels_;
    std::int64_t frames_read_ = 0;
    std::int64_t not_finite_ = 0;
    std::string first_error_;  // of the library while it decoded
};

}  // namespace program
