// A picture of a rendering: the levels of input and output, the output's spectrum, the delay times
// that were read, and the events, over one axis of time. Memory use does not grow with the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/picture/columns.h"
#include "tools/picture/delay_track.h"
#include "tools/picture/levels.h"
#include "tools/picture/spectrogram.h"

namespace program {

struct picture_flag {
    double seconds;
    std::string text;  // of what happens there
};

struct picture_texts {
    std::string title;
    std::string settings;
    std::vector<picture_flag> flags;  // in order of time
};

class picture {
public:
    picture(std::string file, int rate);  // rate in Hz

    static void check_suffix(const std::string& file);  // throws usage_error

    // Interleaved; in has that many channels, out two.
    void add(const float* in, int channels, std::int64_t in_frames, const float* out,
             std::int64_t frames);
    // delays: null where they are not known. Replaces the file; throws
    // failure.
    void write(const picture_texts& texts, const columns<read_delays>* delays);

private:
    std::string file_;
    int rate_;
    levels input_;
    levels output_;
    spectrogram spectrum_;
    std::int64_t in_frames_ = 0;
    std::int64_t frames_ = 0;
};

}  // namespace program
