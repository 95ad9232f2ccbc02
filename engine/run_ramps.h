// From the values of ramps, in the units of the setters, to the parameters that the stages read:
// the arithmetic of the setters for a block of values.
//
// Included by the two kernels only.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "engine/block.h"
#include "engine/dry_wet.h"
#include "engine/fast_math.h"
#include "engine/frame_values.h"
#include "engine/lanes.h"
#include "engine/parameters.h"
#include "engine/ramp.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {

// Where the values of a block's parameters lie.
struct alignas(Oct) RampedBlock {
    std::array<std::array<float, max_block>, sizeof(Parameters<Constant>) / sizeof(Constant)> rows;

    // All at the engine's values.
    VESK_INLINE Parameters<PerFrame> parameters(const Vesk& engine) noexcept {
        float* row = rows.front().data();
        return make_parameters(engine, [&](float value) VESK_LAMBDA {
            float* const values = row;
            row += max_block;
            for (std::size_t i = 0; i < max_block; i += lane_count<Oct>)
                store(values + i, broadcast<Oct>(value));
            return PerFrame{values};
        });
    }
};

// The frames' values of the parameters that one ramp moves. What a stage that is off would read is
// left out.
VESK_INLINE void run_ramp(const Vesk& engine, const Ramp& ramp, const Parameters<PerFrame>& p,
                          std::size_t n) noexcept {
    const auto set = [&](PerFrame to, auto law) VESK_LAMBDA {
        for_each_mono_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
            store(to.values + i, law(load<T>(ramp.values + i)));
        });
    };
    const auto unchanged = [](auto x) VESK_LAMBDA { return x; };
    const auto db_to_gain = []<class T>(T x) VESK_LAMBDA { return fast_db_to_gain<T>(x); };
    const auto smoothing_at = [&](float rate) VESK_LAMBDA {
        return [=]<class T>(T seconds)
                   VESK_LAMBDA { return one_pole_coefficient<T>(seconds, broadcast<T>(rate)); };
    };
    const auto morph = [&](const auto& bank, PerFrame gain_a, PerFrame gain_b) VESK_LAMBDA {
        for (std::size_t i = 0; i < n; ++i) {
            const auto at = bank.morph_at(ramp.values[i]);
            gain_a.values[i] = at.gain_a;
            gain_b.values[i] = at.gain_b;
        }
    };
    switch (ramp.parameter) {
        case Parameter::dry_wet:
            return for_each_mono_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
                const auto gains = dry_wet_gains<T>(engine.dry_wet_mode, load<T>(ramp.values + i));
                store(p.dry_gain.values + i, gains.dry);
                store(p.wet_gain.values + i, gains.wet);
            });
        case Parameter::gate_threshold:
            if (!engine.gate_on) return;
            return for_each_mono_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
                const T open = fast_db_to_gain<T>(load<T>(ramp.values + i));
                store(p.gate_open_threshold.values + i, open);
                store(p.gate_close_threshold.values + i, Gate::close_threshold(open));
            });
        case Parameter::gate_release:
            if (!engine.gate_on) return;
            return set(p.gate_release_coefficient, smoothing_at(engine.gate_sample_rate));
        case Parameter::feedback:
            return set(p.feedback, unchanged);
        case Parameter::input_gain:
            return set(p.input_gain, db_to_gain);
        case Parameter::output_gain:
            return set(p.output_gain, db_to_gain);
        case Parameter::duck_threshold:
            return set(p.duck_threshold, unchanged);
        case Parameter::duck_release:
            if (!engine.duck_on) return;
            return set(p.duck_release_coefficient, smoothing_at(engine.ducker.sample_rate[0]));
        case Parameter::mod_frequency:
            return set(p.phase_increment, [&]<class T>(T hz) VESK_LAMBDA {
                return engine.modulator.phase_increment_of(hz);
            });
        case Parameter::mod_envelope:
            return set(p.envelope_mix, unchanged);
        case Parameter::mod_phase:
            return set(p.phase_offset, []<class T>(T degrees) VESK_LAMBDA {
                return Modulator::phase_offset_of(degrees);
            });
        case Parameter::mod_delay:
            return set(p.mod_delay, unchanged);
        case Parameter::reverb_amount:
            return set(p.reverb_amount, unchanged);
        case Parameter::reverb_decay:
            return set(p.reverb_decay, unchanged);
        case Parameter::noise_amount:
            return set(p.noise_amount, unchanged);
        case Parameter::noise_morph:
            if (engine.noise_on) morph(engine.noise_bank, p.noise_gain_a, p.noise_gain_b);
            return;
        case Parameter::wobble_amount:
            return set(p.wobble_amount, unchanged);
        case Parameter::wobble_morph:
            if (engine.wobble_on) morph(engine.wobble_bank, p.wobble_gain_a, p.wobble_gain_b);
            return;
        case Parameter::width:
            return set(p.width, unchanged);
    }
}

}  // namespace orvane::blocks::vesk
