// What may move from frame to frame, and its movement through a block.
#pragma once

#include <cstdint>

namespace orvane::blocks::vesk {

// What the setters of single numbers set, each in the unit of its setter.
enum class Parameter : std::uint8_t {
    dry_wet,
    gate_threshold,  // dB
    gate_release,    // s
    feedback,
    input_gain,      // dB
    output_gain,     // dB
    duck_threshold,  // dB
    duck_release,    // s
    mod_frequency,   // Hz
    mod_envelope,
    mod_phase,  // degrees
    mod_delay,
    reverb_amount,
    reverb_decay,
    noise_amount,
    noise_morph,
    wobble_amount,
    wobble_morph,
    width
};

struct Ramp {
    Parameter parameter;
    const float* values;  // one for each frame of the block
};

}  // namespace orvane::blocks::vesk
