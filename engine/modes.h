// The choices of the effect. Their values are 32-bit integers that users' settings store by index.
#pragma once

#include <cstdint>

namespace kv7::orv::vesk {

enum class channel_mode : std::int32_t {
    stereo,    // two independent lines
    pingpong,  // input summed into the left line; each line feeds the other
    midside    // the left line carries mid, the right line side
};
enum class waveform_mode : std::int32_t { sine, triangle, saw_up, saw_down, square, random };
enum class location_mode : std::int32_t {
    pre,      // reverb on what enters the lines
    post,     // on the wet signal, outside the loop
    feedback  // on the delayed signal, its result inside the loop
};
enum class dry_wet_mode : std::int32_t { linear, equal_loudness };

}  // namespace kv7::orv::vesk
