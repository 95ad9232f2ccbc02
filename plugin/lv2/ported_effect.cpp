#include "ported_effect.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kv7::orv::lv2 {
namespace {

std::unique_ptr<vesk_driver> prepared_driver(double rate) {
    auto driver = std::make_unique<vesk_driver>(rate);
    driver->prepare(rate);
    return driver;
}

// What is not a number is no news while it stays so.
bool differs(float a, float b) noexcept {
    return a != b && !(std::isnan(a) && std::isnan(b));
}

}  // namespace

ported_effect::ported_effect(double rate) : rate_(rate), driver_(prepared_driver(rate)) {
    for (const control_port port : control_ports_) ++attributes_[port.attribute].count;
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
    if (fresh_) return;
    try {
        driver_ = prepared_driver(rate_);
        fresh_ = true;
    } catch (const std::bad_alloc&) {
        driver_->core.request_reset();
    }
}

void ported_effect::run(std::uint32_t frames) {
    if (fresh_)
        start();
    else
        take_changes();
    std::size_t done = 0;
    do {  // an empty block takes its changes too
        const std::size_t piece = std::min(frames - done, piece_frames);
        play_piece(done, piece);
        done += piece;
    } while (done < frames);
}

bool ported_effect::attribute_ports::take() noexcept {
    bool news = false;
    for (std::size_t i = 0; i < count; ++i) {
        const float now = *data[i];
        news |= differs(now, seen[i]);
        seen[i] = now;
    }
    return news;
}

bool ported_effect::trigger::take() noexcept {
    const bool before = held;
    held = *data > 0.0f;
    return held && !before;
}

std::array<double, list_length> ported_effect::values_of(std::size_t attribute) const noexcept {
    const auto& seen = attributes_[attribute].seen;
    // A port that toggles is off up to 0 and on above, where the attribute is off between -1 and 1.
    if (attribute_table[attribute].kind == attribute_kind::toggle)
        return {seen[0] <= 0.0f ? 0.0 : 1.0};
    return {double{seen[0]}, double{seen[1]}};
}

void ported_effect::land(std::size_t attribute) noexcept {
    attributes_[attribute].take();
    driver_->jump_to(attribute, values_of(attribute));
}

void ported_effect::start() {
    // The delay before all else: with repitch set the tape head then begins on it and doesn't glide
    // to it from the default.
    for (std::size_t i = 0; i < attribute_count; ++i)
        if (attribute_table[i].kind == attribute_kind::list) land(i);
    for (std::size_t i = 0; i < attribute_count; ++i) land(i);
    for (trigger& t : triggers_) t.take();  // one held from the start has not risen
    fresh_ = false;
}

void ported_effect::take_changes() {
    for (std::size_t i = 0; i < attribute_count; ++i)
        if (attributes_[i].take()) driver_->set(i, values_of(i));
    if (triggers_[clear].take()) driver_->core.request_clear();
    if (triggers_[reset].take()) driver_->core.request_reset();
}

void ported_effect::play_piece(std::size_t begin, std::size_t frames) {
    // Both inputs are read before an output is written, which may be the memory of either.
    for (std::size_t c = 0; c < 2; ++c) {
        const float* const in = audio_[in_left + c] + begin;
        std::transform(in, in + frames, piece_[c].begin(),
                       [](float x) { return std::isfinite(x) ? double{x} : 0.0; });
    }
    double* const channels[2] = {piece_[0].data(), piece_[1].data()};
    const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
    driver_->core.perform(bundle, bundle);
    for (std::size_t c = 0; c < 2; ++c)
        std::transform(piece_[c].begin(), piece_[c].begin() + static_cast<std::ptrdiff_t>(frames),
                       audio_[out_left + c] + begin,
                       [](double y) { return static_cast<float>(y); });
}

}  // namespace kv7::orv::lv2
