// The delay times that the effect's heads really read while a sound plays. The object does not tell
// of them, so the effect plays the same a second time, to the bit, through the driver.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "tools/message_text.h"
#include "tools/picture/columns.h"
#include "tools/score.h"
#include "vesk_driver.h"

namespace program {

// Of one head on one side of the line.
struct read_delay {
    float low = std::numeric_limits<float>::infinity();  // s
    float high = 0;
    float weight = 0;  // of what is heard, 0 to 1; 0: not in use
};

struct read_delays {
    std::array<std::array<read_delay, 2>, 2> head_side;

    void merge(const read_delays& later, double share);
};

class delay_track {
public:
    // A class of another name has no such heads.
    static bool knows(const std::string& class_name);

    // seed: as for the instance that is heard. Throws failure.
    delay_track(const std::vector<message>& settings, const score& events, int rate,
                int vector_size, std::optional<std::uint64_t> seed);

    void play(const float* in, int channels);  // one vector
    const columns<read_delays>& over_time() const { return columns_; }

private:
    void send(const message& sent);

    kv7::orv::vesk_driver driver_;
    score events_;
    std::size_t vector_size_;
    std::vector<double> left_;
    std::vector<double> right_;
    std::int64_t position_ = 0;  // frames
    columns<read_delays> columns_;
};

}  // namespace program
