// What every driver of the effect shares, free of any host: engine and tables, the attributes'
// values and their two ways to the engine, the rebuild at a new sample rate, and the audio loop.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "at_end.h"
#include "attribute_row.h"
#include "attribute_values.h"
#include "engine/floating_point_state.h"
#include "parameter_queue.h"
#include "sample_rate.h"
#include "smooth_value.h"
#include "vector_gate.h"

namespace kv7::orv {

// One vector of 64-bit samples, one array a channel. An output may be the memory of an input.
struct signal_bundle {
    double* const* channels;
    std::int32_t channel_count;
    std::int32_t frame_count;
};

// Main thread, except where a line names another.
template <class Engine>
class driver_core {
public:
    // An engine that is replaced before it is heard; rate in Hz. rows outlive this. Throws
    // std::bad_alloc, and std::invalid_argument for a rate that is not accepted.
    driver_core(double rate, std::span<const attribute_row> rows);
    driver_core(const driver_core&) = delete;  // ramps hold the address of engine
    driver_core& operator=(const driver_core&) = delete;

    // Declared so that the engine is destroyed before its tables, which it refers to.
    std::shared_ptr<void> tables;
    std::unique_ptr<Engine> engine;
    double prepared_sample_rate = 0.0;  // Hz of the last rebuild; 0: none yet, vectors are silent

    // Makes the tables of a new engine at its rate, in Hz; may be empty.
    std::function<std::shared_ptr<void>(Engine&, float)> rebuild_tables;
    // Sets every attribute's value once more, in the order of the rows; empty: restore of each.
    std::function<void()> restore_values;

    // Sets an attribute, by its index in rows: a number, a list's one or two. Values are clamped,
    // no values change nothing. A continuous one may be set on any thread. Allocates nothing.
    // When 511 changes are queued already a toggle, choice or list keeps its value here while the
    // engine keeps the old one, until the next set or rebuild.
    void set(std::size_t attribute, std::span<const double> values);
    // The same without a ramp, before the first vector of a rate and on the thread that runs it.
    void jump_to(std::size_t attribute, std::span<const double> values);
    // Brings the value last set to the engine once more.
    void restore(std::size_t attribute);
    // A continuous attribute's value; any thread.
    smooth_value& ramp_of(std::size_t attribute) noexcept { return *parameters_[attribute].ramp; }

    // A new rate, in Hz, rebuilds everything; the present one changes nothing. When something is
    // thrown everything stays as it was, the remembered rate too: std::bad_alloc, or
    // std::invalid_argument for a rate that is not accepted. A call from inside restore_values
    // returns at once, and the newest rate so asked for is prepared after it.
    void prepare(double rate);

    // Any thread. They act at the top of the next vector, several before one vector as one.
    void request_clear() noexcept { request(clear_bit); }
    void request_reset() noexcept { request(reset_bit); }

    // Audio thread, in any floating-point state, which is left as it was. Two channels in, two out.
    void perform(const signal_bundle& in, const signal_bundle& out);

private:
    static constexpr std::uint32_t clear_bit = 1;
    static constexpr std::uint32_t reset_bit = 2;

    // What was last set: in the ramp of a continuous attribute, else in value.
    struct parameter {
        smooth_value* ramp = nullptr;
        short_list value;
    };

    void request(std::uint32_t bit) noexcept { requests_.fetch_or(bit, std::memory_order_relaxed); }
    void take_requests() noexcept;
    void post(std::size_t attribute);
    void rebuild(double rate, bool through_owner);
    void run(const signal_bundle& in, const signal_bundle& out);
    std::size_t run_ramped_block(const double* in_left, const double* in_right, double* out_left,
                                 double* out_right, std::size_t frames);

    std::span<const attribute_row> rows_;
    std::list<smooth_value> smooth_values_;
    std::vector<parameter> parameters_;  // in the order of rows
    parameter_queue queue_;
    ramp_list ramps_;
    std::vector<std::array<float, Engine::max_ramp>> ramp_values_;  // for each attribute that ramps
    std::vector<orvane::blocks::vesk::Ramp> ramps_of_block_;
    double newest_rate_ = 0.0;  // Hz; the last one asked for
    bool rebuilding_ = false;   // no vector is inside: this thread may act as the audio thread
    std::atomic<std::uint32_t> requests_{0};
    vector_gate gate_;
};

template <class Engine>
driver_core<Engine>::driver_core(double rate, std::span<const attribute_row> rows) : rows_(rows) {
    require_sample_rate(rate);
    engine = std::make_unique<Engine>(static_cast<float>(rate));
    parameters_.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const attribute_row& row = rows[i];
        if (const auto* const setter = std::get_if<ramped_setter>(&row.setter)) {
            parameters_[i].ramp = &smooth_values_.emplace_back(
                row.default_value, row.low, row.high,
                [this, set = setter->set](double v) { set(*engine, v); });
            ramps_.add(*parameters_[i].ramp, i);
        } else {
            const double standard[list_length] = {row.default_value, row.default_value};
            const bool is_list = row.kind == attribute_kind::list;
            parameters_[i].value = short_list(std::span(standard).first(is_list ? list_length : 1));
        }
    }
    ramp_values_.resize(smooth_values_.size());
    ramps_of_block_.resize(smooth_values_.size());
}

template <class Engine>
void driver_core<Engine>::set(std::size_t attribute, std::span<const double> values) {
    if (values.empty()) return;
    parameter& p = parameters_[attribute];
    if (p.ramp != nullptr) return p.ramp->set_value(values[0]);
    const attribute_row& row = rows_[attribute];
    double kept[list_length] = {};
    const std::size_t count = std::min(values.size(), list_length);
    for (std::size_t i = 0; i < count; ++i)
        kept[i] = row.kind == attribute_kind::list ? clamped_element(values[i], row.low, row.high)
                                                   : values[i];
    p.value = short_list(std::span(kept).first(count));
    post(attribute);
}

template <class Engine>
void driver_core<Engine>::jump_to(std::size_t attribute, std::span<const double> values) {
    smooth_value* const ramp = parameters_[attribute].ramp;
    if (ramp == nullptr) return set(attribute, values);
    if (!values.empty()) ramp->jump_to(values[0]);
}

template <class Engine>
void driver_core<Engine>::restore(std::size_t attribute) {
    if (smooth_value* const ramp = parameters_[attribute].ramp)
        ramp->mark_pending();  // not set anew: another thread may have set it since it was read
    else
        post(attribute);
}

template <class Engine>
void driver_core<Engine>::post(std::size_t attribute) {
    const attribute_row& row = rows_[attribute];
    const short_list& value = parameters_[attribute].value;
    if (queue_.post_change(row, value) || !rebuilding_) return;
    // A rebuild brings every value to the engine, however full the queue: in place of the audio
    // thread, which it excludes, it makes room.
    queue_.apply_queued_changes(*engine);
    queue_.post_change(row, value);
}

template <class Engine>
void driver_core<Engine>::prepare(double rate) {
    require_sample_rate(rate);
    newest_rate_ = rate;
    if (rebuilding_) return;
    if (rate != prepared_sample_rate) rebuild(rate, true);
    // Restoring the values may have led the owner to ask for another rate. Without the owner it
    // cannot do so again.
    if (newest_rate_ != prepared_sample_rate) rebuild(newest_rate_, false);
}

template <class Engine>
void driver_core<Engine>::rebuild(double rate, bool through_owner) {
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
            for (const auto& ramp : ramps_.values()) ramp.value->rebuilt(now);
        };
        swap_in(rate);
        rebuilding_ = true;
        bool restored = false;
        // Also when something is thrown; then the old engine comes back.
        const at_end finish([&] {
            rebuilding_ = false;
            if (!restored) swap_in(old_rate);
        });
        if (through_owner && restore_values)
            restore_values();
        else
            for (std::size_t i = 0; i < parameters_.size(); ++i) restore(i);
        restored = true;
        requests_.store(0, std::memory_order_relaxed);  // of audio that is gone
    }
    // The old engine is destroyed here, on this thread, and its tables after it.
    new_engine.reset();
}

template <class Engine>
void driver_core<Engine>::perform(const signal_bundle& in, const signal_bundle& out) {
    const orvane::blocks::vesk::StandardFloatingPoint state;
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
    ramps_.scan();
    queue_.apply_queued_changes(*engine);

    const std::size_t frames = in.frame_count > 0 ? static_cast<std::size_t>(in.frame_count) : 0;
    const double* const left = in.channels[0];
    const double* const right = in.channels[1];
    double* const out_left = out.channels[0];
    double* const out_right = out.channels[1];
    std::size_t i = 0;
    while (!ramps_.active().empty() && i < frames)
        i += run_ramped_block(left + i, right + i, out_left + i, out_right + i, frames - i);
    engine->process(left + i, right + i, out_left + i, out_right + i, frames - i);
}

// Runs the active ramps for a block and processes it; gives its length, at most frames.
template <class Engine>
std::size_t driver_core<Engine>::run_ramped_block(const double* in_left, const double* in_right,
                                                  double* out_left, double* out_right,
                                                  std::size_t frames) {
    const auto setter_of_ramp = [this](const ramp_list::entry& ramp) -> const ramped_setter& {
        return std::get<ramped_setter>(rows_[ramp.attribute].setter);
    };
    std::size_t n = std::min(frames, Engine::max_ramp);
    for (const ramp_list::entry& ramp : ramps_.active()) {
        const auto stages = setter_of_ramp(ramp).stages;
        if (stages == nullptr) continue;
        // Ramps are monotonic: what the first and the last value share, all do.
        const int first = stages(ramp.value->value_after(0));
        while (stages(ramp.value->value_after(n - 1)) != first) --n;
    }
    std::size_t count = 0;
    for (const ramp_list::entry& ramp : ramps_.active()) {
        smooth_value& value = *ramp.value;
        if (value.remaining != 0) {
            value.next_values(ramp_values_[count]);
            ramps_of_block_[count] = {setter_of_ramp(ramp).parameter, ramp_values_[count].data()};
            ++count;
        }
        value.setter(value.value_after(n - 1));
    }
    // Only those that had ended before the block: the others have their last step yet to go.
    ramps_.drop_ended();
    for (const ramp_list::entry& ramp : ramps_.active()) ramp.value->advance(n);
    if (n == 1 || count == 0)
        engine->process(in_left, in_right, out_left, out_right, n);
    else
        engine->process(in_left, in_right, out_left, out_right, n,
                        std::span(ramps_of_block_).first(count));
    return n;
}

}  // namespace kv7::orv
