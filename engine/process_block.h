// The order of the stages: how a block of frames passes through the engine.
//
// Included by the two kernels only (process_portable, process_fma); all others call Vesk::process.
#pragma once

#include <cstddef>
#include <type_traits>

#include "engine/block.h"
#include "engine/frame_values.h"
#include "engine/lanes.h"
#include "engine/parameters.h"
#include "engine/prefetch.h"
#include "engine/routing.h"
#include "engine/saturator.h"
#include "engine/side_by_side.h"
#include "engine/vesk.h"

// A part of the block's way that is a function of its own, with all that it calls inlined: in one
// function for all, compilers spill more registers.
#define VESK_STAGE [[gnu::noinline, gnu::flatten]] static

namespace orvane::blocks::vesk {

// The number of frames of a block of one, known to the compiler.
using OneFrame = std::integral_constant<std::size_t, 1>;

// The outputs of the recursive stages that depend on nothing but the raw input. They are computed
// for a whole block before any audio. Those of stages that are off are uninitialised.
struct ControlSignals {
    Block lfo_phases;         // of the modulator
    Block envelope;           // of the modulator
    Block gate_gain;          // equal in both lanes
    Block reduction;          // of the ducker, dB
    Block reverb_lfo_phases;  // of tank half 0 and of half 1

    VESK_INLINE ControlSignals slice(std::size_t first, std::size_t n) const noexcept {
        return {lfo_phases.slice(first, n), envelope.slice(first, n), gate_gain.slice(first, n),
                reduction.slice(first, n), reverb_lfo_phases.slice(first, n)};
    }
};

template <class Values, class Count>
VESK_STAGE ControlSignals run_control_stages(Vesk& engine, const Parameters<Values>& p,
                                             const Block& x, Count n) noexcept {
    const bool gate_on = engine.gate_on;
    const bool duck_on = engine.duck_on;
    const bool reverb_on = engine.reverb_amount != 0.0f;
    const Block level = with_routing(engine.channel_mode, [&](auto routing) VESK_LAMBDA {
        return map_block(
            n, [=](auto a) VESK_LAMBDA { return abs(routing.detector(a)); }, x);
    });
    const Block peak = gate_on ? Gate::peaks(x, n) : uninitialised_block();
    const auto louder_channel = [](auto a)
                                    VESK_LAMBDA { return max(abs(a), swap_left_right(abs(a))); };
    const Block target =
        duck_on ? engine.ducker.targets(map_block(n, louder_channel, x), p.duck_threshold, n)
                : uninitialised_block();
    // All of them in one loop, so that their latencies overlap; in copies, so that their state is
    // kept in registers. Each copy gets the parameters of the frame.
    Modulator modulator = engine.modulator;
    Gate gate = engine;
    Ducker ducker = engine.ducker;
    Pair reverb_lfo_phase = engine.reverb.lfo_phase;
    float left_phases[max_block];
    ControlSignals out;
    const auto step_modulator = [&](std::size_t i) VESK_LAMBDA {
        modulator.phase_increment = p.phase_increment.template mono<float>(i);
        left_phases[i] = modulator.step_phase();
        out.envelope[i] = modulator.step_envelope(level[i]);
    };
    if (gate_on || duck_on || reverb_on) {
        for (std::size_t i = 0; i < n; ++i) {
            step_modulator(i);
            if (gate_on) {
                gate.gate_close_threshold = p.gate_close_threshold.template mono<float>(i);
                gate.gate_open_threshold = p.gate_open_threshold.template mono<float>(i);
                gate.gate_release_coefficient = p.gate_release_coefficient.template mono<float>(i);
                out.gate_gain[i] = broadcast<Pair>(gate.step(peak[i][0]));
            }
            if (duck_on) {
                ducker.release_coefficient = p.duck_release_coefficient.template at<Pair>(i);
                out.reduction[i] = ducker.step(target[i]);
            }
            out.reverb_lfo_phases[i] = reverb_lfo_phase;
            if (reverb_on) reverb_lfo_phase = engine.reverb.next_lfo_phase(reverb_lfo_phase);
        }
    } else {
        for (std::size_t i = 0; i < n; ++i) step_modulator(i);
    }
    Modulator::phases_of_both(left_phases, p.phase_offset, n, out.lfo_phases);
    engine.modulator.phase = modulator.phase;
    engine.modulator.envelope = modulator.envelope;
    engine.gate_open = gate.gate_open;
    engine.gate_gain = gate.gate_gain;
    engine.gate_envelope = gate.gate_envelope;
    engine.ducker.reduction_db = ducker.reduction_db;
    engine.reverb.lfo_phase = reverb_lfo_phase;
    return out;
}

// The next n values of a bank, times amount, each in both channels.
template <class Bank, class Values>
VESK_INLINE Block next_values(Bank& bank, Values gain_a, Values gain_b, Values amount,
                              std::size_t n) noexcept {
    float mono[max_block];
    bank.next(mono, gain_a, gain_b, n);
    Block values;
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const auto value = load<Mono<T>>(mono + i) * amount.template mono<Mono<T>>(i);
        values.set(i, interleave(value, value));
    });
    return values;
}

// The read speed in octaves: the modulator at its depth, and the wobble.
template <class Values>
VESK_INLINE Block read_speed(Vesk& engine, const Parameters<Values>& p,
                             const ControlSignals& control, std::size_t n) noexcept {
    const Block m = engine.modulator.blend(control.lfo_phases, control.envelope, p.phase_offset,
                                           p.envelope_mix, n);
    const float mult = engine.mod_mult ? 3.0f : 1.0f;
    if (!engine.wobble_on)
        return map_block(
            n, [&](auto a, auto depth) VESK_LAMBDA { return a * (depth * mult) + 0.0f; }, m,
            p.mod_delay);
    const Block w =
        next_values(engine.wobble_bank, p.wobble_gain_a, p.wobble_gain_b, p.wobble_amount, n);
    return map_block(
        n, [&](auto a, auto b, auto depth) VESK_LAMBDA { return a * (depth * mult) + b; }, m, w,
        p.mod_delay);
}

VESK_INLINE void add(Block& x, const Block& y, std::size_t n) noexcept {
    map_into(
        x, n, [](auto p, auto q) VESK_LAMBDA { return p + q; }, x, y);
}

// The reverb's output for x, times reverb_amount. It is sent mid and side, the side 3 dB lower.
template <class Values>
VESK_INLINE Block reverb_send(Vesk& engine, const Parameters<Values>& p, const Block& x,
                              const Block& lfo_phases, std::size_t n) noexcept {
    const Block sent = map_block(
        n,
        []<class T>(T a) VESK_LAMBDA {
            constexpr float side_gain = 0.35355338f;  // 1 / (2 * sqrt(2))
            return sum_and_difference(sum_and_difference(a) * broadcast<T>(0.5f, side_gain));
        },
        x);
    const Block sums = engine.reverb.process(sent, lfo_phases, p.reverb_decay, n);
    return map_block(
        n, [](auto q, auto amount) VESK_LAMBDA { return q * amount; }, sums, p.reverb_amount);
}

// What the lines give back: decoded in place, then saturated.
VESK_INLINE void decode_and_saturate(const Vesk& engine, Block& delayed, std::size_t n) noexcept {
    with_routing(engine.channel_mode, [&](auto routing) VESK_LAMBDA {
        map_into(
            delayed, n, [=](auto d) VESK_LAMBDA { return routing.decode(d); }, delayed);
    });
    map_side_by_side_into(
        delayed, n, [](auto d) VESK_LAMBDA { return saturate(d); }, delayed);
}

// The input with its gain, its noise and the gate.
template <class Values>
VESK_INLINE Block gated_input(Vesk& engine, const Parameters<Values>& p, const Block& x,
                              const Block& gate_gain, std::size_t n) noexcept {
    Block g =
        engine.noise_on
            ? map_block(
                  n, [](auto a, auto gain, auto b) VESK_LAMBDA { return a * gain + b; }, x,
                  p.input_gain,
                  next_values(engine.noise_bank, p.noise_gain_a, p.noise_gain_b, p.noise_amount, n))
            : map_block(
                  n, [](auto a, auto gain) VESK_LAMBDA { return a * gain + 0.0f; }, x,
                  p.input_gain);
    if (engine.gate_on)
        map_into(
            g, n, [](auto a, auto gain) VESK_LAMBDA { return a * gain; }, g, gate_gain);
    return g;
}

// What is written on the lines: the input and the feedback, encoded. What is fed back is s, and
// with the reverb in the loop also its output r. r holds reverb_amount already, so the reverb
// enters the loop at the square of it.
template <class Values>
VESK_INLINE Block line_input(const Vesk& engine, const Parameters<Values>& p, const Block& input,
                             const Block& s, const Block& r, bool reverb_in_loop,
                             std::size_t n) noexcept {
    return with_routing(engine.channel_mode, [&](auto routing) VESK_LAMBDA {
        return map_block(
            n,
            [&, routing](auto i, auto a, auto b, auto amount, auto gain) VESK_LAMBDA {
                const auto loop = reverb_in_loop ? a + amount * b : a;
                const auto f = routing.feedback(loop, gain);
                const auto c = engine.feedback_invert ? routing.input(i) - f : routing.input(i) + f;
                return routing.encode(c);
            },
            input, s, r, p.reverb_amount, p.feedback);
    });
}

// The output: the wet signal after width and ducker, mixed with the dry one.
template <class Values>
VESK_INLINE Block mixed(const Vesk& engine, const Parameters<Values>& p, const Block& x,
                        const Block& wet, const Block& reduction, std::size_t n) noexcept {
    Block o = map_block(
        n,
        []<class T>(T v, T width) VESK_LAMBDA {
            const T mid = (dup_left(v) + dup_right(v)) * 0.5f;
            const T side = (dup_left(v) - dup_right(v)) * width * 0.5f;
            return mid + side * broadcast<T>(1.0f, -1.0f);
        },
        wet, p.width);
    if (engine.duck_on) engine.ducker.apply(o, reduction, n);
    const bool clip_dry = engine.clip_dry;
    return map_block(
        n,
        [=](auto a, auto b, auto in, auto out, auto wet_gain, auto dry_gain) VESK_LAMBDA {
            const auto y = clip_dry ? saturate(b * in) * out : b;
            return (out * wet_gain) * a + dry_gain * y;
        },
        o, x, p.input_gain, p.output_gain, p.wet_gain, p.dry_gain);
}

// The audio stages for n frames of which none reads what another one writes. They begin at frame
// first of the plan.
template <class Values, class Count>
VESK_STAGE Block process_sub_block(Vesk& engine, const Parameters<Values>& p, const Block& x,
                                   const ControlSignals& control, const ReadPlan& plan,
                                   std::size_t first, Count n) noexcept {
    using kv7::orv::vesk::location_mode;
    const bool reverb_on = engine.reverb_amount != 0.0f;
    const bool reverb_pre = reverb_on && engine.reverb_location == location_mode::pre;
    const bool reverb_post = reverb_on && engine.reverb_location == location_mode::post;
    const bool reverb_in_loop = reverb_on && engine.reverb_location == location_mode::feedback;

    const auto send = [&](const Block& to_reverb) VESK_LAMBDA {
        return reverb_send(engine, p, to_reverb, control.reverb_lfo_phases, n);
    };
    Block s = engine.read_delay(plan, first, n);
    decode_and_saturate(engine, s, n);
    Block r = reverb_in_loop ? send(s) : uninitialised_block();

    Block input = gated_input(engine, p, x, control.gate_gain, n);
    if (reverb_pre) add(input, send(input), n);
    engine.write_delay(line_input(engine, p, input, s, reverb_in_loop ? r : s, reverb_in_loop, n),
                       n);

    if (reverb_in_loop) add(r, s, n);
    Block& wet = reverb_in_loop ? r : s;
    if (reverb_post) add(wet, send(wet), n);
    return mixed(engine, p, x, wet, control.reduction, n);
}

template <class Values, class Count>
VESK_STAGE ReadPlan plan_reads(Vesk& engine, const Parameters<Values>& p,
                               const ControlSignals& control, Count n) noexcept {
    return engine.plan_reads(read_speed(engine, p, control, n), n);
}

// A block of n frames, 1 to max_block. Control signals and reads are computed for all of it, the
// audio in sub-blocks where a delay is shorter than the block.
template <class Values, class Count>
VESK_INLINE Block process_block(Vesk& engine, const Parameters<Values>& p, const Block& x,
                                Count n) noexcept {
    const ControlSignals control = run_control_stages(engine, p, x, n);
    const ReadPlan plan = plan_reads(engine, p, control, n);
    if (std::is_same_v<Count, OneFrame> || !plan.reads_block) [[likely]]
        return process_sub_block(engine, p, x, control, plan, 0, n);
    Block out;
    const auto process = [&](std::size_t first, auto length) VESK_LAMBDA {
        const Block y = process_sub_block(engine, p.from(first), x.slice(first, length),
                                          control.slice(first, length), plan, first, length);
        for (std::size_t i = 0; i < length; ++i) out[first + i] = y[i];
    };
    for (std::size_t first = 0, length = 0; first < n; first += length) {
        length = plan.max_sub_block(first, n);
        if (length == 1)
            process(first, OneFrame{});
        else
            process(first, length);
    }
    return out;
}

// Prefetches what the next n frames read and write. Inlined, since compilers take a function that
// only prefetches for one without effect and drop the call.
VESK_INLINE void prefetch_block(const Vesk& engine, std::size_t n) noexcept {
    const auto prefetch_stages = [&](std::size_t frames) VESK_LAMBDA {
        if (engine.wobble_on) engine.wobble_bank.prefetch_block(frames);
        engine.DelaySection::prefetch_block(frames);
        if (engine.noise_on) engine.noise_bank.prefetch_block(frames);
        if (engine.reverb_amount != 0.0f) engine.reverb.prefetch_block(frames);
    };
    if (n == max_block) [[likely]]
        prefetch_stages(max_block);  // a constant: its loops are unrolled
    else if (n >= min_prefetched_block)
        prefetch_stages(n);
}

}  // namespace orvane::blocks::vesk
