#include "tools/score.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/text_file.h"

namespace program {

score::score(const tesk::class_info& of_class, value_rules rules)
    : of_class_(of_class), rules_(std::move(rules)) {}

void score::add(std::string_view line, const value_rules& rules) {
    line = trimmed(line);
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view word = line.substr(0, end);
    const std::optional<double> seconds = read_number(word);
    if (!seconds || *seconds < 0)
        throw bad_text("\"" + std::string(word) + "\" is not a time in seconds, 0 or later");
    events_.push_back({*seconds, read_message(of_class_, line.substr(end), rules), 0});
}

void score::add_file(const std::string& file) {
    value_rules rules = rules_;
    std::size_t number = 0;
    if (rules.clamp_warning)
        rules.clamp_warning = [&](const std::string& text) {
            rules_.clamp_warning(file + ":" + std::to_string(number) + ": " + text);
        };
    for_each_line(file, [&](std::string_view line) {
        ++number;
        line = trimmed(line.substr(0, line.find('#')));
        if (line.starts_with("bpm ") || line.starts_with("bpm\t")) {
            rules.bpm = read_bpm(line.substr(4));
            if (!rules_.bpm) rules_.bpm = rules.bpm;
        } else if (!line.empty()) {
            add(line, rules);
        }
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

score score::without(const std::string& selector) const {
    score rest(*this);
    std::erase_if(rest.events_, [&](const event& e) { return e.what.selector == selector; });
    rest.next_ = 0;
    return rest;
}

}  // namespace program
