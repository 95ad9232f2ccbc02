// Where a time stands in a picture, and how it reads.
#pragma once

#include <string>
#include <vector>

namespace program {

struct time_tick {
    double seconds;
    std::string text;
};

// At most about ten ticks at round times: seconds below a minute, else m:ss or h:mm:ss.
std::vector<time_tick> time_ticks(double seconds);

}  // namespace program
