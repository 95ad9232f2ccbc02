// The effect engine: the whole state of a stereo modulation delay.
//
//   x -> input gain -> + noise -> gate -> [reverb] -> (+) -> encode -> delay lines -> decode -+
//                                                      ^                                      |
//                                                      +-- feedback <-+-- [reverb] <-- saturator
//                                                                     |
//   out <- mix with dry <- ducker <- width <- [reverb] <--------------+
//
// Encode, decode and feedback depend on the channel mode (routing.h). There is one reverb, at one
// of the three locations. Modulator and wobble bank set the read speed of the lines; gate and
// ducker are keyed by x.
//
// Plain data: setters write members between two calls of process, process reads them. Nothing
// allocates, locks or throws after construction, and a new sample rate is a new engine.
#pragma once

#include <cstddef>
#include <span>

#include "engine/delay_section.h"
#include "engine/dynamics.h"
#include "engine/lanes.h"
#include "engine/modes.h"
#include "engine/modulator.h"
#include "engine/ramp.h"
#include "engine/reverb.h"
#include "engine/sample_banks.h"

namespace orvane::blocks::vesk {

struct Vesk : DelaySection, Gate {
    Ducker ducker;
    Modulator modulator;
    Reverb reverb;
    SampleBank<5> noise_bank;
    SampleBank<4> wobble_bank;
    float feedback = 0.5f;  // linear
    bool feedback_invert = false;
    kv7::orv::vesk::channel_mode channel_mode = kv7::orv::vesk::channel_mode::stereo;
    float input_gain = 1.0f;     // linear
    float output_gain = 1.0f;    // linear
    float mod_delay = 0.0f;      // octaves of read speed at the modulator's full scale
    bool mod_mult = false;       // multiplies that by 3
    float noise_amount = 0.0f;   // linear
    float wobble_amount = 0.0f;  // octaves of read speed
    bool clip_dry = false;       // dry path has input gain, saturator and output gain
    bool gate_on = false;
    bool duck_on = false;
    bool noise_on = false;   // needs attached tables
    bool wobble_on = false;  // needs attached tables
    kv7::orv::vesk::location_mode reverb_location = kv7::orv::vesk::location_mode::post;
    float reverb_amount = 0.0f;  // linear; 0: the reverb is not run
    float width = 1.0f;          // gain of the wet side signal
    kv7::orv::vesk::dry_wet_mode dry_wet_mode = kv7::orv::vesk::dry_wet_mode::linear;
    float dry_wet = 0.7f;   // 0 to 1
    float dry_gain = 0.0f;  // from dry_wet by the law of dry_wet_mode
    float wet_gain = 0.0f;

    // rate in Hz, positive. Ready to process. Throws std::bad_alloc.
    explicit Vesk(float rate);
    Vesk(const Vesk&) = delete;  // the banks' tables are attached to this address
    Vesk& operator=(const Vesk&) = delete;

    Frame process(Frame input) noexcept;

    // The same for a vector of 64-bit samples. Outputs may be the same memory as inputs.
    void process(const double* in_left, const double* in_right, double* out_left, double* out_right,
                 std::size_t frames) noexcept;

    // The same for at most max_ramp frames while parameters move: as if before each frame their
    // setters were called with the ramps' values of it. The setters have been called with the last
    // values already. None of the values may switch noise, wobble or reverb on or off, or take a
    // morph to another pair of players: there the block is cut.
    static constexpr std::size_t max_ramp = max_block;
    void process(const double* in_left, const double* in_right, double* out_left, double* out_right,
                 std::size_t frames, std::span<const Ramp> ramps) noexcept;

    void set_dry_wet(float position);
    void set_dry_wet(kv7::orv::vesk::dry_wet_mode mode);

    void engine_clear() noexcept;  // silences lines and reverb
    void engine_reset() noexcept;  // all audio state to its start value; parameters stay

private:
    void apply_dry_wet_law();
};

}  // namespace orvane::blocks::vesk
