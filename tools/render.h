// Plays a sound file through the effect into another.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/render_options.h"
#include "tools/render_plan.h"

namespace program {

struct rendering {
    std::string output;  // the file written
    std::int64_t frames = 0;
    int rate = 0;                       // Hz
    double peak = 0;                    // linear
    double tail = 0;                    // s after the end of the input
    double wall_time = 0;               // s
    double silent_share = 0;            // of the frames, 0 to 1
    std::vector<message> settings;      // before the start
    std::optional<std::uint64_t> seed;  // as asked
    std::vector<std::string> warnings;
    std::string silence_reason;  // "" when there is none to name
};

// Checks of the command line that need no object. Throws usage_error and failure.
void check_paths(const render_options& options);

// warn gets a line for whatever the output is not as asked. Throws usage_error and failure.
rendering render_file(const render_options& options, const tesk::class_info& of_class,
                      const warning& warn);

// One file, with warnings on the error stream and a line of summary. Throws as render_file.
void render(const render_options& options);

}  // namespace program
