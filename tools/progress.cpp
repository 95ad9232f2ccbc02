#include "tools/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <string>

#include "tools/text.h"

namespace program {

namespace {

constexpr std::size_t max_bar_width = 40;  // characters
constexpr auto interval = std::chrono::milliseconds(100);
constexpr const char* clear_line = "\r\033[K";

std::size_t terminal_columns() {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

}  // namespace

progress::progress(std::optional<std::int64_t> expected, int rate, bool quiet)
    : expected_(expected), rate_(rate), enabled_(!quiet && isatty(STDERR_FILENO) == 1) {}

void progress::show(std::int64_t frames) {
    if (!enabled_ || clock::now() < next_) return;
    next_ = clock::now() + interval;
    const double passed = std::chrono::duration<double>(clock::now() - began_).count();
    const double played = static_cast<double>(frames) / rate_;
    std::string text = fixed_text(played, 1) + " s";
    if (passed > 0) text += ", " + fixed_text(played / passed, 0) + " times real time";
    std::string bar;
    const std::size_t columns = terminal_columns() - 1;  // a full line would wrap
    if (expected_ && *expected_ > 0 && columns > text.size() + 8) {
        const std::size_t width = std::min(max_bar_width, columns - text.size() - 3);
        const double share =
            std::min(1.0, static_cast<double>(frames) / static_cast<double>(*expected_));
        const auto filled = static_cast<std::size_t>(share * static_cast<double>(width));
        bar = "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] ";
    }
    const std::string line = clear_line + bar + text.substr(0, columns);
    std::cerr << line << std::flush;
    shown_ = true;
}

void progress::clear() {
    if (shown_) std::cerr << clear_line << std::flush;
    shown_ = false;
}

}  // namespace program
