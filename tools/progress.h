// A bar on the error stream while a file plays; nothing where that is no terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace program {

class progress {
public:
    // expected: frames in all, if known. Quiet ones never show.
    progress(std::optional<std::int64_t> expected, int rate, bool quiet);
    ~progress() { clear(); }
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    void show(std::int64_t frames);  // ten times a second at most
    void clear();                    // leaves an empty line for other texts

private:
    using clock = std::chrono::steady_clock;
    std::optional<std::int64_t> expected_;
    int rate_;
    bool shows_;
    bool dirty_ = false;
    clock::time_point began_ = clock::now();
    clock::time_point next_ = began_;
};

}  // namespace program
