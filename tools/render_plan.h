// What a rendering asks of the effect: its settings and the messages of its score.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"
#include "tools/render_options.h"
#include "tools/score.h"

namespace program {

using warning = std::function<void(const std::string&)>;  // takes one line

struct render_plan {
    std::vector<message> settings;  // each attribute at most once
    score events;
};

// Throws usage_error, and failure for files that can't be read. warn gets a line for each value
// that --clamp changes.
render_plan plan_of(const render_options& options, const tesk::class_info& of_class,
                    const warning& warn);

// After so long a silence the output of an automatic tail stays silent: a second, or the longest
// delay that settings and events can make.
double silence_to_wait(const render_plan& plan, const tesk::class_info& of_class);  // s

}  // namespace program
