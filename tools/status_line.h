// A bar and a text on the error stream, rewritten in place, when that is a terminal.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace program {

class status_line {
public:
    explicit status_line(bool quiet);  // quiet: nothing is shown
    ~status_line() { clear(); }
    status_line(const status_line&) = delete;
    status_line& operator=(const status_line&) = delete;

    bool is_due() const;  // ten times a second at most
    // share: 0 to 1, if known. Both fit into the terminal's width; the bar gives way first.
    void show(std::optional<double> share, const std::string& text);
    void clear();  // empties the line, for other texts

private:
    using clock = std::chrono::steady_clock;
    bool enabled_;
    bool shown_ = false;
    clock::time_point next_ = clock::now();
};

}  // namespace program
