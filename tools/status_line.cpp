#include "tools/status_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iostream>

namespace program {

namespace {

constexpr std::size_t min_bar_width = 5;   // characters
constexpr std::size_t max_bar_width = 40;  // characters
constexpr auto interval = std::chrono::milliseconds(100);
constexpr const char* clear_line = "\r\033[K";

std::size_t terminal_columns() {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

}  // namespace

status_line::status_line(bool quiet) : enabled_(!quiet && isatty(STDERR_FILENO) == 1) {}

bool status_line::is_due() const {
    return enabled_ && clock::now() >= next_;
}

void status_line::show(std::optional<double> share, const std::string& text) {
    if (!is_due()) return;
    next_ = clock::now() + interval;
    std::string bar;
    const std::size_t columns = terminal_columns() - 1;  // a full line would wrap
    constexpr std::size_t frame = 3;                     // "[] "
    if (share && columns >= text.size() + frame + min_bar_width) {
        const std::size_t width = std::min(max_bar_width, columns - text.size() - frame);
        const auto filled =
            static_cast<std::size_t>(std::clamp(*share, 0.0, 1.0) * static_cast<double>(width));
        bar = "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] ";
    }
    std::cerr << clear_line << bar << text.substr(0, columns) << std::flush;
    shown_ = true;
}

void status_line::clear() {
    if (shown_) std::cerr << clear_line << std::flush;
    shown_ = false;
}

}  // namespace program
