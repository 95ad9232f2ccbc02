// Shows a bar on the error stream while a file plays, when that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace program {

class progress {
public:
    // expected: total frames, if known. quiet: nothing is shown.
    progress(std::optional<std::int64_t> expected, int rate, bool quiet);
    ~progress() { clear(); }
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    void show(std::int64_t frames);  // ten times a second at most
    void clear();                    // empties the line, for other texts

private:
    using clock = std::chrono::steady_clock;
    std::optional<std::int64_t> expected_;
    int rate_;
    bool enabled_;
    bool shown_ = false;
    clock::time_point began_ = clock::now();
    clock::time_point next_ = began_;
};

}  // namespace program
