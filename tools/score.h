// The messages to send while a file plays, in order of time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"

namespace program {

struct event {
    double seconds = 0;
    message what;
    std::int64_t frame = 0;  // round(seconds * rate), set by schedule
};

class score {
public:
    // rules: of the values in the messages. Their tempo is that of files without one of their own.
    explicit score(const tesk::class_info& of_class, value_rules rules = {});

    // Adds `SECONDS MESSAGE`. Throws bad_text.
    void add(std::string_view line) { add(line, rules_); }
    void add(std::string_view line, const value_rules& rules);

    // Adds one event per line; `#` starts a comment. A line `bpm 120` sets the tempo of the lines
    // after it. Throws usage_error with file and line, failure when the file can't be read.
    void add_file(const std::string& file);

    // Sets the frames for this rate and sorts; events of equal frames keep the order in which they
    // were added.
    void schedule(double rate);

    // Takes the next message whose frame is at or before this vector boundary; null when there is
    // none. Boundaries must not decrease.
    const message* due(std::int64_t boundary);

    score without(const std::string& selector) const;  // the others, from the start

    const std::vector<event>& events() const { return events_; }
    std::size_t done() const { return next_; }  // events taken

    // The given tempo, or without one the first that a file has set.
    const std::optional<double>& bpm() const { return rules_.bpm; }

private:
    const tesk::class_info& of_class_;
    value_rules rules_;
    std::vector<event> events_;
    std::size_t next_ = 0;
};

}  // namespace program
