// The parameters that ramps move, as the stages read them: frame by frame.
//
// The stages are compiled for both kinds of values. At rest each parameter is a Constant, which
// costs what reading a member costs; while ramps run each is PerFrame.
#pragma once

#include <cstddef>

#include "engine/frame_values.h"
#include "engine/lanes.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {

template <class Values>
struct Parameters {
    Values gate_close_threshold;
    Values gate_open_threshold;
    Values gate_release_coefficient;
    Values duck_threshold;  // dB
    Values duck_release_coefficient;
    Values phase_increment;
    Values phase_offset;
    Values envelope_mix;
    Values mod_delay;
    Values wobble_amount;
    Values wobble_gain_a;
    Values wobble_gain_b;
    Values input_gain;
    Values noise_amount;
    Values noise_gain_a;
    Values noise_gain_b;
    Values feedback;
    Values reverb_amount;
    Values reverb_decay;
    Values width;
    Values output_gain;
    Values dry_gain;
    Values wet_gain;

    // The values from a frame of the block on.
    VESK_INLINE Parameters from(std::size_t first) const noexcept {
        return {
            gate_close_threshold.from(first),
            gate_open_threshold.from(first),
            gate_release_coefficient.from(first),
            duck_threshold.from(first),
            duck_release_coefficient.from(first),
            phase_increment.from(first),
            phase_offset.from(first),
            envelope_mix.from(first),
            mod_delay.from(first),
            wobble_amount.from(first),
            wobble_gain_a.from(first),
            wobble_gain_b.from(first),
            input_gain.from(first),
            noise_amount.from(first),
            noise_gain_a.from(first),
            noise_gain_b.from(first),
            feedback.from(first),
            reverb_amount.from(first),
            reverb_decay.from(first),
            width.from(first),
            output_gain.from(first),
            dry_gain.from(first),
            wet_gain.from(first),
        };
    }
};

// Each of the engine's values, by way of make.
template <class Make>
VESK_INLINE auto make_parameters(const Vesk& e, Make make) noexcept {
    return Parameters<decltype(make(0.0f))>{
        make(e.gate_close_threshold),
        make(e.gate_open_threshold),
        make(e.gate_release_coefficient),
        make(e.ducker.threshold_db[0]),
        make(e.ducker.release_coefficient[0]),
        make(e.modulator.phase_increment),
        make(e.modulator.phase_offset),
        make(e.modulator.envelope_mix),
        make(e.mod_delay),
        make(e.wobble_amount),
        make(e.wobble_bank.gain_a),
        make(e.wobble_bank.gain_b),
        make(e.input_gain),
        make(e.noise_amount),
        make(e.noise_bank.gain_a),
        make(e.noise_bank.gain_b),
        make(e.feedback),
        make(e.reverb_amount),
        make(e.reverb.decay[0]),
        make(e.width),
        make(e.output_gain),
        make(e.dry_gain),
        make(e.wet_gain),
    };
}

VESK_INLINE Parameters<Constant> parameters_at_rest(const Vesk& engine) noexcept {
    return make_parameters(engine, [](float value) VESK_LAMBDA { return Constant{value}; });
}

}  // namespace orvane::blocks::vesk
