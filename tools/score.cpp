#include "tools/score.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/text_file.h"

namespace program {

void score::add(std::string_view line) {
    line = trimmed(line);
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view word = line.substr(0, end);
    const std::optional<double> seconds = read_number(word);
    if (!seconds || *seconds < 0)
        throw bad_text("\"" + std::string(word) + "\" is not a time in seconds, 0 or later");
    events_.push_back({*seconds, read_message(of_class_, line.substr(end)), 0});
}

void score::add_file(const std::string& file) {
    for_each_line(file, [this](std::string_view line) {
        line = trimmed(line.substr(0, line.find('#')));
        if (!line.empty()) add(line);
    });
}

void score::schedule(double rate) {
    constexpr double max_frame = 9e18;  // llround is undefined above the range of 64 bits
    for (event& e : events_) e.frame = std::llround(std::min(e.seconds * rate, max_frame));
    std::stable_sort(events_.begin(), events_.end(),
                     [](const event& a, const event& b) { return a.frame < b.frame; });
    next_ = 0;
}

const message* score::due(std::int64_t boundary) {
    if (next_ == events_.size() || events_[next_].frame > boundary) return nullptr;
    return &events_[next_++].what;
}

}  // namespace program
