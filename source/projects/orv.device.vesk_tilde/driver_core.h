// What every driver of the effect shares, free of any host: engine and tables, the roads that
// values take to them, the rebuild at a new sample rate and the audio loop.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "parameter_queue.h"
#include "smooth_value.h"
#include "vector_gate.h"

namespace kv7::orv {

// One vector of 64-bit samples, one array a channel. An output may be the memory of an input.
struct signal_bundle {
    double* const* channels;
    std::int32_t channel_count;
    std::int32_t frame_count;
};

// Owner, except for the audio thread's perform and the requests of any thread: the main thread.
template <class Engine>
class driver_core {
public:
    // An engine that is replaced before it is heard; rate in Hz. Throws std::bad_alloc.
    explicit driver_core(double rate)
        : engine(std::make_unique<Engine>(static_cast<float>(rate))) {}
    driver_core(const driver_core&) = delete;  // setters hold the address of engine
    driver_core& operator=(const driver_core&) = delete;

    // Declared so that the engine goes first and its tables, which it refers to, after it.
    std::shared_ptr<void> tables;
    std::unique_ptr<Engine> engine;
    double prepared_sample_rate = 0.0;  // Hz of the last rebuild; 0: none yet, vectors are silent
    parameter_queue<Engine> parameters;
    ramp_list ramps;

    // Makes the tables of a new engine at its rate, in Hz; may be empty.
    std::function<std::shared_ptr<void>(Engine&, float)> rebuild_tables;
    // Sets every attribute's value once more, in the order of registration.
    std::function<void()> set_values_again;

    template <class Argument>
    bound_setter<Engine, Argument> bind(void (*set)(Engine&, Argument)) const noexcept {
        return {&engine, set};
    }

    // A new rate, in Hz, rebuilds everything; the present one changes nothing. When something is
    // thrown everything stays as it was, the remembered rate too.
    void prepare(double rate);

    // Any thread. They act at the top of the next vector, several before one vector as one.
    void request_clear() noexcept { request(clear_bit); }
    void request_reset() noexcept { request(reset_bit); }

    // Audio thread. Two channels in, two out.
    void perform(const signal_bundle& in, const signal_bundle& out);

private:
    static constexpr std::uint32_t clear_bit = 1;
    static constexpr std::uint32_t reset_bit = 2;

    void request(std::uint32_t bit) noexcept { requests_.fetch_or(bit, std::memory_order_relaxed); }
    void take_requests() noexcept;
    void run(const signal_bundle& in, const signal_bundle& out);

    std::atomic<std::uint32_t> requests_{0};
    vector_gate gate_;
};

template <class Engine>
void driver_core<Engine>::prepare(double rate) {
    if (!(rate < prepared_sample_rate) && !(rate > prepared_sample_rate)) return;
    // Finished before anything is given up, so that a failure here changes nothing.
    auto new_engine = std::make_unique<Engine>(static_cast<float>(rate));
    std::shared_ptr<void> new_tables;
    if (rebuild_tables) new_tables = rebuild_tables(*new_engine, static_cast<float>(rate));
    {
        const vector_gate::exclusion no_vector(gate_);
        const double old_rate = prepared_sample_rate;
        const auto swap_in = [&](double now) {
            prepared_sample_rate = now;
            engine.swap(new_engine);
            tables.swap(new_tables);
            for (smooth_value* value : ramps.values()) value->rebuilt(now);
        };
        swap_in(rate);
        try {
            if (set_values_again) set_values_again();
        } catch (...) {
            swap_in(old_rate);
            throw;
        }
        requests_.store(0, std::memory_order_relaxed);  // of audio that is gone
    }
    // The old engine goes here, on this thread, and its tables after it.
    new_engine.reset();
}

template <class Engine>
void driver_core<Engine>::perform(const signal_bundle& in, const signal_bundle& out) {
    const bool entered = gate_.try_enter();
    if (!entered || prepared_sample_rate == 0.0) {
        const std::int32_t frames = std::max(in.frame_count, 0);
        for (int c = 0; c < 2; ++c) std::fill_n(out.channels[c], frames, 0.0);
    } else {
        run(in, out);
    }
    if (entered) gate_.leave();
}

template <class Engine>
void driver_core<Engine>::take_requests() noexcept {
    if (requests_.load(std::memory_order_relaxed) == 0) return;
    const std::uint32_t taken = requests_.exchange(0, std::memory_order_relaxed);
    if ((taken & reset_bit) != 0)
        engine->engine_reset();
    else
        engine->engine_clear();
}

template <class Engine>
void driver_core<Engine>::run(const signal_bundle& in, const signal_bundle& out) {
    take_requests();
    ramps.scan();
    parameters.apply_queued_changes();

    const std::size_t frames = in.frame_count > 0 ? static_cast<std::size_t>(in.frame_count) : 0;
    const double* const left = in.channels[0];
    const double* const right = in.channels[1];
    double* const out_left = out.channels[0];
    double* const out_right = out.channels[1];
    std::size_t i = 0;
    bool ramping = ramps.any_active();
    for (; ramping && i < frames; ++i) {
        ramping = ramps.run_step();
        engine->process(left + i, right + i, out_left + i, out_right + i, 1);
    }
    // Ramps that have ended give their setters the same value until the vector ends.
    engine->process(left + i, right + i, out_left + i, out_right + i, frames - i);
}

}  // namespace kv7::orv
