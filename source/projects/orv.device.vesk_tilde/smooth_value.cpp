#include "smooth_value.h"

#include <algorithm>
#include <utility>

namespace kv7::orv {

smooth_value::smooth_value(double value, double lowest, double highest,
                           std::function<void(double)> set)
    : current(value),
      target(value),
      user_value(value),
      low(lowest),
      high(highest),
      setter(std::move(set)) {}

void smooth_value::set_value(double x) noexcept {
    const double clamped = !(high >= x) ? high : !(x >= low) ? low : x;
    user_value.store(clamped, std::memory_order_relaxed);
    mark_pending();
}

void smooth_value::mark_pending() noexcept {
    // Publishes the value. Read-modify-write, so that of two threads that set the value neither
    // hides what the other published from the audio thread.
    pending.exchange(true, std::memory_order_acq_rel);
    if (any_pending != nullptr) any_pending->exchange(true, std::memory_order_acq_rel);
}

void smooth_value::take_pending() noexcept {
    if (!pending.load(std::memory_order_relaxed)) return;
    // Cleared before the value is read: a set in between marks it once more for the next scan.
    pending.exchange(false, std::memory_order_acq_rel);
    ramp_to(user_value.load(std::memory_order_relaxed), ramp_samples);
}

void smooth_value::jump_to(double x) {
    set_value(x);
    pending.store(false, std::memory_order_relaxed);
    ramp_to(user_value.load(std::memory_order_relaxed), 0);
    setter(current);
}

void smooth_value::ramp_to(double value, std::uint64_t samples) noexcept {
    target = value;
    length = samples;
    if (samples < 2 || value == current) {
        current = value;
        remaining = 0;
        return;
    }
    remaining = samples - 1;
    step = (value - current) / static_cast<double>(remaining);
}

// Computed back from the target, so that the ramp lands on it exactly.
double smooth_value::value_after(std::uint64_t samples) const noexcept {
    if (samples == 0) return current;
    const std::uint64_t left = remaining - std::min(samples, remaining);
    return target - static_cast<double>(left) * step;
}

void smooth_value::next_values(std::span<float> to) const noexcept {
    // The same with a counter that needs no conversion.
    auto left = static_cast<double>(remaining);
    for (float& value : to) {
        value = static_cast<float>(target - left * step);
        left = std::max(left - 1.0, 0.0);
    }
    if (!to.empty()) to[0] = static_cast<float>(current);
}

void smooth_value::advance(std::uint64_t samples) noexcept {
    current = value_after(samples);
    remaining -= std::min(samples, remaining);
}

bool smooth_value::scan() {
    take_pending();
    if (state == ramp_state::ramping && remaining == 0) {
        state = ramp_state::idle;
        setter(current);  // the ramp's last step may have fallen on the vector's last sample
    } else if (state == ramp_state::idle && remaining != 0) {
        state = ramp_state::ramping;
    }
    return state == ramp_state::ramping;
}

void smooth_value::rebuilt(double sample_rate) {
    take_pending();
    ramp_samples = static_cast<std::uint64_t>(sample_rate * ramp_seconds);
    setter(current);
}

void ramp_list::add(smooth_value& value, std::size_t attribute) {
    value.any_pending = &any_pending_;
    all_.push_back({&value, attribute});
    active_.reserve(all_.size());
}

void ramp_list::scan() {
    active_.clear();
    // Nearly always nothing has been set and nothing ramps. A value that is marked while the others
    // are scanned has set any_pending after it was cleared here, for the next scan.
    if (all_idle_ && !any_pending_.load(std::memory_order_relaxed)) return;
    any_pending_.exchange(false, std::memory_order_acq_rel);
    for (const entry& each : all_)
        if (each.value->scan()) active_.push_back(each);
    all_idle_ = active_.empty();
}

void ramp_list::drop_ended() noexcept {
    std::erase_if(active_, [](const entry& each) { return each.value->remaining == 0; });
}

}  // namespace kv7::orv
