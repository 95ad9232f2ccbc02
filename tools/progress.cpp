#include "tools/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <string>

#include "tools/text.h"

namespace program {

namespace {

constexpr std::size_t bar_width = 40;  // characters
constexpr auto interval = std::chrono::milliseconds(100);
constexpr const char* clear_line = "\r\033[K";

}  // namespace

progress::progress(std::optional<std::int64_t> expected, int rate, bool quiet)
    : expected_(expected), rate_(rate), enabled_(!quiet && isatty(STDERR_FILENO) == 1) {}

void progress::show(std::int64_t frames) {
    if (!enabled_ || clock::now() < next_) return;
    next_ = clock::now() + interval;
    const double passed = std::chrono::duration<double>(clock::now() - began_).count();
    const double played = static_cast<double>(frames) / rate_;
    std::string line = clear_line;
    if (expected_ && *expected_ > 0) {
        const double share =
            std::min(1.0, static_cast<double>(frames) / static_cast<double>(*expected_));
        const auto filled = static_cast<std::size_t>(share * bar_width);
        line += "[" + std::string(filled, '#') + std::string(bar_width - filled, '.') + "] ";
    }
    line += fixed_text(played, 1) + " s";
    if (passed > 0) line += ", " + fixed_text(played / passed, 0) + " times real time";
    std::cerr << line << std::flush;
    shown_ = true;
}

void progress::clear() {
    if (shown_) std::cerr << clear_line << std::flush;
    shown_ = false;
}

}  // namespace program
