// The progress of one rendering: how much is played, and how fast.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "tools/status_line.h"

namespace program {

class progress {
public:
    // expected: total frames, if known. quiet: nothing is shown.
    progress(std::optional<std::int64_t> expected, int rate, bool quiet);

    void show(std::int64_t frames);

private:
    using clock = std::chrono::steady_clock;
    std::optional<std::int64_t> expected_;
    int rate_;
    status_line line_;
    clock::time_point began_ = clock::now();
};

}  // namespace program
