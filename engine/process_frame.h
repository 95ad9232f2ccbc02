// The order of the stages: what one sample passes on its way through the engine.
//
// For the files that are compiled for one processor each (process_portable, process_fma); others
// call Vesk::process.
#pragma once

#include "engine/lanes.h"
#include "engine/saturator.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {

// (left + right, left - right), its result scaled by the caller.
VESK_INLINE Pair sum_and_difference(Pair x) noexcept {
    return Pair{x[0] + x[1], x[0] - x[1]};
}

// Sends x to the reverb with its side signal reduced. Its left output is tap sum A of the left
// lane, its right output tap sum B of the right one.
VESK_INLINE Pair reverb_send(Vesk& engine, Pair x) noexcept {
    constexpr float side_gain = 0.35355338f;  // 1 / (2 * sqrt(2))
    const Pair mid_side = sum_and_difference(x) * Pair{0.5f, side_gain};
    const Reverb::Sums sums = engine.reverb.process(sum_and_difference(mid_side));
    return Pair{sums.a[0], sums.b[1]} * engine.reverb_amount;
}

VESK_INLINE Pair read_speed(Vesk& engine, Pair detector) noexcept {
    const Pair m = engine.modulator.process(detector);
    const float w = engine.wobble_on ? engine.wobble_bank.next() * engine.wobble_amount : 0.0f;
    constexpr float deepening = 3.0f;  // the label says four
    const float depth = engine.mod_delay * (engine.mod_mult ? deepening : 1.0f);
    return m * depth + w;
}

// The input with its noise, gated.
VESK_INLINE Pair played_signal(Vesk& engine, Pair x) noexcept {
    const float n = engine.noise_on ? engine.noise_bank.next() * engine.noise_amount : 0.0f;
    const Pair g = x * engine.input_gain + n;
    return engine.gate_on ? g * engine.step_gate(x) : g;
}

VESK_INLINE Pair dry_signal(const Vesk& engine, Pair x) noexcept {
    return engine.clip_dry ? saturate(x * engine.input_gain) * engine.output_gain : x;
}

VESK_INLINE Pair with_width(Pair wet, float width) noexcept {
    const float mid = (wet[0] + wet[1]) * 0.5f;
    const float side = (wet[0] - wet[1]) * width * 0.5f;
    return Pair{side + mid, mid - side};
}

VESK_INLINE Pair process_frame(Vesk& engine, Pair x) noexcept {
    using kv7::orv::vesk::channel_mode;
    using kv7::orv::vesk::location_mode;
    const bool mid_side = engine.channel_mode == channel_mode::midside;
    const bool pingpong = engine.channel_mode == channel_mode::pingpong;
    const bool reverb_on = engine.reverb_amount != 0.0f;
    const location_mode location = engine.reverb_location;

    // In mid/side mode the modulator follows mid and side; gate and ducker always the raw input.
    const Pair detector = mid_side ? sum_and_difference(x) * 0.5f : x;
    Pair delayed = engine.read_delay(read_speed(engine, detector));
    if (mid_side) delayed = sum_and_difference(delayed);  // unity: the halves are in the encoding
    const Pair s = saturate(delayed);
    const bool in_loop = reverb_on && location == location_mode::feedback;
    const Pair r = in_loop ? reverb_send(engine, s) : Pair{};

    Pair played = played_signal(engine, x);
    if (reverb_on && location == location_mode::pre) played += reverb_send(engine, played);
    if (pingpong) {
        constexpr float sum_gain = 0.70710677f;  // 1 / sqrt(2)
        played = Pair{(played[0] + played[1]) * sum_gain, 0.0f};
    }

    // r holds reverb_amount already: the reverb enters the loop at its square.
    Pair fed_back = s + engine.reverb_amount * r;
    if (pingpong)  // a full journey through both lines costs the square
        fed_back = Pair{engine.feedback * engine.feedback * fed_back[1], fed_back[0]};
    else
        fed_back = fed_back * engine.feedback;
    const Pair sum = engine.feedback_invert ? played - fed_back : played + fed_back;
    engine.write_delay(mid_side ? sum_and_difference(sum) * 0.5f : sum);

    Pair wet = r + s;
    if (reverb_on && location == location_mode::post) wet += reverb_send(engine, wet);
    wet = with_width(wet, engine.width);
    if (engine.duck_on) {
        const Pair size = magnitude(x);
        wet = engine.ducker.process(wet, both(larger(size[0], size[1])));
    }
    const float wet_level = engine.output_gain * engine.wet_gain;
    return wet_level * wet + engine.dry_gain * dry_signal(engine, x);
}

// A vector of 64-bit samples; both inputs of a frame are read before its outputs are written.
VESK_INLINE void process_frames(Vesk& engine, const double* in_left, const double* in_right,
                                double* out_left, double* out_right, std::size_t frames) noexcept {
    for (std::size_t i = 0; i < frames; ++i) {
        const Pair y = process_frame(
            engine, Pair{static_cast<float>(in_left[i]), static_cast<float>(in_right[i])});
        out_left[i] = static_cast<double>(y[0]);
        out_right[i] = static_cast<double>(y[1]);
    }
}

}  // namespace orvane::blocks::vesk
