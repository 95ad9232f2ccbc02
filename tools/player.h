// Runs the effect vector by vector and sends the messages of a score between vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/host.h"
#include "tools/score.h"

namespace program {

// The calling thread is also the host's main thread: before each vector deferred calls run and due
// events are sent.
class player {
public:
    // effect: of that class.
    player(const tesk::class_info& of_class, tesk::instance& effect, score& events,
           int vector_size);

    // Plays one vector of interleaved frames. out has two channels; a single input channel goes to
    // both inlets. What is set by the first frame sounds from there, without fade or glide, if the
    // object can be reset. Throws failure when the object refuses a message.
    void play(const float* in, int channels, float* out);

    std::int64_t position() const { return position_; }  // frames played

private:
    void start();
    void send(const message& sent);

    tesk::instance& effect_;
    score& events_;
    std::size_t vector_size_;
    std::vector<double> left_;
    std::vector<double> right_;
    std::int64_t position_ = 0;
    bool started_;
};

}  // namespace program
