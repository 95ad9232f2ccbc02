// The messages to send while a file plays, in order of time.
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
    std::int64_t frame = 0;  // round(seconds * rate), set by schedule
};

class score {
public:
    explicit score(const tesk::class_info& of_class) : of_class_(of_class) {}

    // Adds `SECONDS MESSAGE`. Throws bad_text.
    void add(std::string_view line);

    // Adds one event per line; `#` starts a comment. Throws failure with file and line.
    void add_file(const std::string& file);

    // Sets the frames for this rate and sorts; events of equal frames keep the order in which they
    // were added.
    void schedule(double rate);

    // Takes the next message whose frame is at or before this vector boundary; null when there is
    // none. Boundaries must not decrease.
    const message* due(std::int64_t boundary);

    const std::vector<event>& events() const { return events_; }
    std::size_t done() const { return next_; }  // events taken

private:
    const tesk::class_info& of_class_;
    std::vector<event> events_;
    std::size_t next_ = 0;
};

}  // namespace program
