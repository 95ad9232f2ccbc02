// The order of the stages: what the frames of a run pass on their way through the engine.
//
// For the files that are compiled for one processor each (process_portable, process_fma); others
// call Vesk::process.
#pragma once

#include "engine/block.h"
#include "engine/lanes.h"
#include "engine/prefetch.h"
#include "engine/saturator.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {

// What follows from the raw input, or from nothing, and waits for itself: decided for a run before
// any audio. Those of stages that are off stand unset.
struct ControlSignals {
    Block phases;     // of the modulator
    Block envelope;   // of the modulator
    Block gate_gain;  // both lanes alike
    Block reduction;  // of the ducker, dB
    Block sway;       // phases of the reverb's oscillators

    VESK_INLINE ControlSignals slice(std::size_t first, std::size_t n) const noexcept {
        return {phases.slice(first, n), envelope.slice(first, n), gate_gain.slice(first, n),
                reduction.slice(first, n), sway.slice(first, n)};
    }
};

VESK_INLINE ControlSignals run_control_stages(Vesk& engine, const Block& x,
                                              std::size_t n) noexcept {
    const bool mid_side = engine.channel_mode == kv7::orv::vesk::channel_mode::midside;
    const bool gate_on = engine.gate_on;
    const bool duck_on = engine.duck_on;
    const bool reverb_on = engine.reverb_amount != 0.0f;
    // In mid/side mode the modulator follows mid and side; gate and ducker the raw input.
    const Block level = map_block(
        n, [=](auto a) VESK_LAMBDA { return abs(mid_side ? sum_and_difference(a) * 0.5f : a); }, x);
    const Block peak = Gate::peaks(x, n);
    const auto louder = [](auto a) VESK_LAMBDA { return max(abs(a), swap_left_right(abs(a))); };
    const Block target =
        duck_on ? engine.ducker.targets(map_block(n, louder, x), n) : uninitialised_block();
    // Copies keep their state in registers; side by side no chain waits for another.
    Modulator modulator = engine.modulator;
    Gate gate = engine;
    Ducker ducker = engine.ducker;
    Pair sway = engine.reverb.lfo_phase;
    ControlSignals out;
    for (std::size_t i = 0; i < n; ++i) {
        out.phases[i] = modulator.step_phases();
        out.envelope[i] = modulator.step_envelope(level[i]);
        if (gate_on) out.gate_gain[i] = broadcast<Pair>(gate.step(peak[i][0]));
        if (duck_on) out.reduction[i] = ducker.step(target[i]);
        out.sway[i] = sway;
        if (reverb_on) sway = engine.reverb.next_lfo_phase(sway);
    }
    engine.modulator.phase = modulator.phase;
    engine.modulator.envelope = modulator.envelope;
    static_cast<Gate&>(engine) = gate;
    engine.ducker.reduction_db = ducker.reduction_db;
    engine.reverb.lfo_phase = sway;
    return out;
}

// Sends x to the reverb with its side signal reduced. Its left output is tap sum A of the left
// lane, its right output tap sum B of the right one.
VESK_INLINE Block reverb_send(Vesk& engine, const Block& x, const Block& sway,
                              std::size_t n) noexcept {
    const Block sent = map_block(
        n,
        []<class T>(T a) VESK_LAMBDA {
            constexpr float side_gain = 0.35355338f;  // 1 / (2 * sqrt(2))
            return sum_and_difference(sum_and_difference(a) * broadcast<T>(0.5f, side_gain));
        },
        x);
    const Block sums = engine.reverb.process(sent, sway, n);
    return map_block(
        n, [&](auto q) VESK_LAMBDA { return q * engine.reverb_amount; }, sums);
}

// A bank's next n values, each in both channels.
template <class Bank>
VESK_INLINE Block next_values(Bank& bank, float amount, std::size_t n) noexcept {
    float mono[max_block];
    bank.next(mono, n);
    Block values;
    for_each_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const auto in_each = load<Mono<T>>(mono + i) * amount;
        values.set(i, interleave(in_each, in_each));
    });
    return values;
}

// Octaves.
VESK_INLINE Block read_speed(Vesk& engine, const ControlSignals& followed, std::size_t n) noexcept {
    const Block m = engine.modulator.blend(followed.phases, followed.envelope, n);
    constexpr float deepening = 3.0f;  // the label says four
    const float depth = engine.mod_delay * (engine.mod_mult ? deepening : 1.0f);
    if (!engine.wobble_on)
        return map_block(
            n, [&](auto a) VESK_LAMBDA { return a * depth + 0.0f; }, m);
    const Block w = next_values(engine.wobble_bank, engine.wobble_amount, n);
    return map_block(
        n, [&](auto a, auto b) VESK_LAMBDA { return a * depth + b; }, m, w);
}

// The input with its noise, gated by the raw input.
VESK_INLINE Block played_signal(Vesk& engine, const Block& x, const Block& gate_gain,
                                std::size_t n) noexcept {
    Block g = engine.noise_on
                  ? map_block(
                        n, [&](auto a, auto b) VESK_LAMBDA { return a * engine.input_gain + b; }, x,
                        next_values(engine.noise_bank, engine.noise_amount, n))
                  : map_block(
                        n, [&](auto a) VESK_LAMBDA { return a * engine.input_gain + 0.0f; }, x);
    if (engine.gate_on)
        map_into(
            g, n, [](auto a, auto gain) VESK_LAMBDA { return a * gain; }, g, gate_gain);
    return g;
}

VESK_INLINE void add(Block& x, const Block& y, std::size_t n) noexcept {
    map_into(
        x, n, [](auto p, auto q) VESK_LAMBDA { return p + q; }, x, y);
}

// What enters the lines: the played signal and what is fed back of s and, when the reverb is in the
// loop, of its r.
VESK_INLINE Block line_input(const Vesk& engine, const Block& played, const Block& s,
                             const Block& r, bool reverb_in_loop, std::size_t n) noexcept {
    using kv7::orv::vesk::channel_mode;
    const bool mid_side = engine.channel_mode == channel_mode::midside;
    const bool pingpong = engine.channel_mode == channel_mode::pingpong;
    constexpr float sum_gain = 0.70710677f;  // 1 / sqrt(2)
    const float once = engine.feedback;
    const auto input = [=](auto i) VESK_LAMBDA {
        return pingpong ? zero_right((dup_left(i) + dup_right(i)) * sum_gain) : i;
    };
    // In ping-pong a full journey through both lines costs the square.
    const auto fed_back = [=]<class T>(T f) VESK_LAMBDA {
        return pingpong ? swap_left_right(f) * broadcast<T>(once * once, 1.0f) : f * once;
    };
    return map_block(
        n,
        [&]<class T>(T i, T a, T b) VESK_LAMBDA {
            // b holds reverb_amount already: the reverb enters the loop at its square.
            const T f = fed_back(reverb_in_loop ? a + engine.reverb_amount * b : a);
            const T sum = engine.feedback_invert ? input(i) - f : input(i) + f;
            return mid_side ? sum_and_difference(sum) * 0.5f : sum;
        },
        played, s, r);
}

// The wet signal behind width and ducker, mixed with the dry one.
VESK_INLINE Block mixed(const Vesk& engine, const Block& x, const Block& wet,
                        const Block& reduction, std::size_t n) noexcept {
    const float width = engine.width;
    Block o = map_block(
        n,
        [=]<class T>(T v) VESK_LAMBDA {
            const T mid = (dup_left(v) + dup_right(v)) * 0.5f;
            const T side = (dup_left(v) - dup_right(v)) * width * 0.5f;
            return mid + side * broadcast<T>(1.0f, -1.0f);
        },
        wet);
    if (engine.duck_on) engine.ducker.apply(o, reduction, n);
    const float wet_level = engine.output_gain * engine.wet_gain;
    const bool clipped = engine.clip_dry;
    return map_block(
        n,
        [&](auto a, auto b) VESK_LAMBDA {
            const auto y = clipped ? saturate(b * engine.input_gain) * engine.output_gain : b;
            return wet_level * a + engine.dry_gain * y;
        },
        o, x);
}

// n frames whose reads all lie before their own writes, from frame first of the plan on.
VESK_INLINE Block process_sub_block(Vesk& engine, const Block& x, const ControlSignals& followed,
                                    const ReadPlan& plan, std::size_t first,
                                    std::size_t n) noexcept {
    using kv7::orv::vesk::location_mode;
    const bool mid_side = engine.channel_mode == kv7::orv::vesk::channel_mode::midside;
    const bool reverb_on = engine.reverb_amount != 0.0f;
    const location_mode location = engine.reverb_location;

    const Block delayed = engine.read_delay(plan, first, n);
    Block s = map_block(
        n,
        [=](auto d) VESK_LAMBDA {
            // Unity: the halves are in the encoding.
            return saturate(mid_side ? sum_and_difference(d) : d);
        },
        delayed);
    const bool reverb_in_loop = reverb_on && location == location_mode::feedback;
    Block r = reverb_in_loop ? reverb_send(engine, s, followed.sway, n) : uninitialised_block();

    Block played = played_signal(engine, x, followed.gate_gain, n);
    if (reverb_on && location == location_mode::pre)
        add(played, reverb_send(engine, played, followed.sway, n), n);
    engine.write_delay(line_input(engine, played, s, reverb_in_loop ? r : s, reverb_in_loop, n), n);

    if (reverb_in_loop) add(r, s, n);
    Block& wet = reverb_in_loop ? r : s;
    if (reverb_on && location == location_mode::post)
        add(wet, reverb_send(engine, wet, followed.sway, n), n);
    return mixed(engine, x, wet, followed.reduction, n);
}

// Asks for the memory that the next run of n frames meets. Always inlined: a compiler would drop
// a call of it as one without effect.
VESK_INLINE void prefetch_block(const Vesk& engine, std::size_t n) noexcept {
    const auto ask = [&](std::size_t frames) VESK_LAMBDA {
        if (engine.wobble_on) engine.wobble_bank.prefetch_block(frames);
        engine.DelaySection::prefetch_block(frames);
        if (engine.noise_on) engine.noise_bank.prefetch_block(frames);
        if (engine.reverb_amount != 0.0f) engine.reverb.prefetch_block(frames);
    };
    if (n == max_block) [[likely]]
        ask(max_block);  // a number known here needs no loops
    else if (n >= min_prefetched_block)
        ask(n);
}

// A run of n frames, 1 to max_block. What depends on the input alone is decided for all of them;
// the audio follows in as many pieces as the shortest delay asks for.
VESK_INLINE Block process_block(Vesk& engine, const Block& x, std::size_t n) noexcept {
    const ControlSignals followed = run_control_stages(engine, x, n);
    const ReadPlan plan = engine.plan_reads(read_speed(engine, followed, n), n);
    std::size_t piece = plan.max_sub_block(0, n);
    if (piece == n) [[likely]]
        return process_sub_block(engine, x, followed, plan, 0, n);
    Block out;
    for (std::size_t first = 0; first < n; first += piece) {
        piece = plan.max_sub_block(first, n);
        const Block y = process_sub_block(engine, x.slice(first, piece),
                                          followed.slice(first, piece), plan, first, piece);
        for (std::size_t i = 0; i < piece; ++i) out[first + i] = y[i];
    }
    return out;
}

}  // namespace orvane::blocks::vesk
