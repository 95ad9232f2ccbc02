// Runs the effect vector by vector, as a host that plays a score would.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/host.h"
#include "tools/score.h"

namespace program {

// Everything happens on the calling thread, which is the host's main thread too: what waits for
// that one and the events that are due are served before each vector.
class player {
public:
    player(tesk::instance& effect, score& events, int vector_size);

    // In and out hold one vector of interleaved frames, out always two channels; one channel in
    // feeds both inlets. Throws failure when a message is refused.
    void play(const float* in, int channels, float* out);

    std::int64_t position() const { return position_; }  // frames played

private:
    tesk::instance& effect_;
    score& events_;
    std::size_t vector_size_;
    std::vector<double> left_;
    std::vector<double> right_;
    std::int64_t position_ = 0;
};

}  // namespace program
