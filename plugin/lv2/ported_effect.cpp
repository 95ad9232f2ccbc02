#include "ported_effect.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "sample_rate.h"

namespace kv7::orv::lv2 {
namespace {

std::unique_ptr<vesk_driver> prepared_driver(double rate) {
    // Its first engine is replaced at once: the smallest one does.
    auto driver = std::make_unique<vesk_driver>(lowest_sample_rate);
    driver->prepare(rate);
    return driver;
}

// NaN differs from itself, but a port that stays NaN has not changed.
bool differs(float a, float b) noexcept {
    return a != b && !(std::isnan(a) && std::isnan(b));
}

}  // namespace

ported_effect::ported_effect(double rate) : rate_(rate), driver_(prepared_driver(rate)) {
    for (const control_port port : control_ports_) ++attributes_[port.attribute].count;
    for (std::size_t i = 0; i < attribute_count; ++i)
        attributes_[i].values.fill(static_cast<float>(attribute_table[i].default_value));
}

void ported_effect::connect(std::size_t port, void* data) noexcept {
    if (port < audio_port_count) {
        audio_[port] = static_cast<float*>(data);
        return;
    }
    port -= audio_port_count;
    const auto* const value = static_cast<const float*>(data);
    if (port < control_ports_.size()) {
        const auto [attribute, element] = control_ports_[port];
        attributes_[attribute].data[element] = value;
        return;
    }
    port -= control_ports_.size();
    if (port < trigger_count) triggers_[port].data = value;
}

void ported_effect::activate() noexcept {
    if (is_new_) return;
    try {
        driver_ = prepared_driver(rate_);
        is_new_ = true;
    } catch (const std::bad_alloc&) {
        driver_->core.request_reset();
    }
}

void ported_effect::run(std::uint32_t frames) {
    if (is_new_)
        set_all();
    else
        set_changed();
    std::size_t done = 0;
    do {  // a block without frames passes its changes on, too
        const std::size_t count = std::min(frames - done, sub_block_frames);
        process_sub_block(done, count);
        done += count;
    } while (done < frames);
}

bool ported_effect::attribute_ports::read() noexcept {
    bool changed = false;
    for (std::size_t i = 0; i < count; ++i) {
        if (data[i] == nullptr) continue;
        const float now = *data[i];
        changed |= differs(now, values[i]);
        values[i] = now;
    }
    return changed;
}

bool ported_effect::trigger::read() noexcept {
    const bool before = on;
    on = data != nullptr && *data > 0.0f;
    return on && !before;
}

std::array<double, list_length> ported_effect::values_of(std::size_t attribute) const noexcept {
    const auto& values = attributes_[attribute].values;
    // LV2: a toggled port is on above 0. The attribute truncates, so 0.5 would be off, and a choice
    // that a host has scaled to and fro may lie a little below its integer.
    if (attribute_table[attribute].kind == attribute_kind::toggle)
        return {values[0] <= 0.0f ? 0.0 : 1.0};
    if (attribute_table[attribute].kind == attribute_kind::choice)
        return {std::round(double{values[0]})};
    return {double{values[0]}, double{values[1]}};
}

void ported_effect::set_without_ramp(std::size_t attribute) noexcept {
    attributes_[attribute].read();
    driver_->jump_to(attribute, values_of(attribute));
}

void ported_effect::set_all() {
    // The delay times first: with repitch on, the tape head then starts on them and doesn't glide
    // there from the default.
    for (std::size_t i = 0; i < attribute_count; ++i)
        if (attribute_table[i].kind == attribute_kind::list) set_without_ramp(i);
    for (std::size_t i = 0; i < attribute_count; ++i) set_without_ramp(i);
    for (trigger& t : triggers_) t.read();  // one that is on from the start doesn't act
    is_new_ = false;
}

void ported_effect::set_changed() {
    for (std::size_t i = 0; i < attribute_count; ++i)
        if (attributes_[i].read()) driver_->set(i, values_of(i));
    if (triggers_[clear].read()) driver_->core.request_clear();
    if (triggers_[reset].read()) driver_->core.request_reset();
}

void ported_effect::process_sub_block(std::size_t begin, std::size_t frames) {
    // Both inputs are copied before an output is written, which may share its memory with either.
    for (std::size_t c = 0; c < 2; ++c) {
        if (audio_[in_left + c] == nullptr) {
            std::fill_n(sub_block_[c].begin(), frames, 0.0);
            continue;
        }
        const float* const in = audio_[in_left + c] + begin;
        std::transform(in, in + frames, sub_block_[c].begin(),
                       [](float x) { return std::isfinite(x) ? double{x} : 0.0; });
    }
    double* const channels[2] = {sub_block_[0].data(), sub_block_[1].data()};
    const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
    driver_->core.perform(bundle, bundle);
    for (std::size_t c = 0; c < 2; ++c) {
        if (audio_[out_left + c] == nullptr) continue;
        std::transform(
            sub_block_[c].begin(), sub_block_[c].begin() + static_cast<std::ptrdiff_t>(frames),
            audio_[out_left + c] + begin, [](double y) { return static_cast<float>(y); });
    }
}

}  // namespace kv7::orv::lv2
