// What happens while a file plays: messages in the order of the frames they belong to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"

namespace program {

struct event {
    double seconds = 0;
    message what;
    std::int64_t frame = 0;  // round(seconds * rate), from schedule on
};

class score {
public:
    explicit score(const tesk::class_info& of_class) : of_class_(of_class) {}

    // `SECONDS MESSAGE`. Throws bad_text.
    void add(std::string_view line);

    // One a line; `#` starts a comment. Throws failure with file and line.
    void add_file(const std::string& file);

    // Frames at this rate, in order; events of one frame keep the order in which they were added.
    void schedule(double rate);

    // The next message that acts at the vector boundary at this frame, which is then done; null
    // when there is none. Boundaries only grow.
    const message* due(std::int64_t boundary);

    const std::vector<event>& events() const { return events_; }
    std::size_t done() const { return next_; }

private:
    const tesk::class_info& of_class_;
    std::vector<event> events_;
    std::size_t next_ = 0;
};

}  // namespace program
