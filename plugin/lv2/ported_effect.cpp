#include "ported_effect.h"

#include <lv2/atom/util.h>

#include <algorithm>
#include <cmath>
#include <new>

#include "sample_rate.h"

namespace kv7::orv::lv2 {
namespace {

constexpr std::size_t delay_attribute = attribute_index("delay");
constexpr std::size_t feedback_attribute = attribute_index("feedback");
constexpr std::size_t channel_mode_attribute = attribute_index("channel_mode");
constexpr std::size_t mod_freq_attribute = attribute_index("mod_freq");
constexpr std::size_t noise_attribute = attribute_index("noise");
constexpr double longest_delay = attribute_table[delay_attribute].high;  // s

std::unique_ptr<vesk_driver> prepared_driver(double rate) {
    // Its first engine is replaced at once: the smallest one does.
    auto driver = std::make_unique<vesk_driver>(lowest_sample_rate);
    driver->prepare(rate);
    return driver;
}

// NaN differs from itself, but a value that stays NaN has not changed.
bool differs(double a, double b) noexcept {
    return a != b && !(std::isnan(a) && std::isnan(b));
}

}  // namespace

ported_effect::ported_effect(double rate, const LV2_URID_Map* map,
                             const LV2_Inline_Display* display)
    : rate_(rate),
      driver_(prepared_driver(rate)),
      tempo_(map),
      bypass_(rate),
      display_(rate, display) {
    for (const control_port& port : control_ports()) {
        if (port.own != own_control_count)
            own_[port.own] = values_.size();
        else if (port.element == 0)
            elements_[port.attribute].fill(values_.size());
        else
            elements_[port.attribute][port.element] = values_.size();
        values_.push_back(port.standard);
    }
    controls_.resize(values_.size());
}

void ported_effect::connect(std::size_t port, void* data) noexcept {
    if (port < audio_port_count) {
        audio_[port] = static_cast<float*>(data);
    } else if (port == event_port) {
        events_ = static_cast<const LV2_Atom_Sequence*>(data);
    } else if (port -= first_control; port < controls_.size()) {
        controls_[port] = static_cast<const float*>(data);
    } else if (port -= controls_.size(); port < trigger_count) {
        triggers_[port].data = static_cast<const float*>(data);
    } else if (port -= trigger_count; port < readout_count) {
        readouts_[port] = static_cast<float*>(data);
    }
}

void ported_effect::activate() noexcept {
    if (is_new_) return;
    try {
        driver_ = prepared_driver(rate_);
        is_new_ = true;
        for (trigger& t : triggers_) t.frames_on = 0.0;
    } catch (const std::bad_alloc&) {
        driver_->core.request_reset();
    }
}

void ported_effect::run(std::uint32_t frames) {
    read_controls();
    const double length = frames;
    for (const trigger_port which : {clear, reset}) {
        const bool acts = triggers_[which].read(length, rate_);
        if (!acts || is_new_) continue;  // one that is on from the start doesn't act
        if (which == clear)
            driver_->core.request_clear();
        else
            driver_->core.request_reset();
    }
    peaks_ = {};
    std::size_t done = 0;
    if (events_ != nullptr) {
        LV2_ATOM_SEQUENCE_FOREACH(events_, event) {
            const auto frame =
                static_cast<std::size_t>(std::clamp<std::int64_t>(event->time.frames, 0, frames));
            if (frame > done) {
                run_to(done, frame);
                done = frame;
            }
            tempo_.read(*event);
        }
    }
    run_to(done, frames);  // without frames, too: it passes the changes on
    write_readouts(frames);
    if (display_.is_shown() && !is_on(free_wheeling)) show_echoes(frames);
}

bool ported_effect::trigger::read(double block_frames, double rate) noexcept {
    const bool before = on;
    on = data != nullptr && *data > 0.0f;
    const bool was_latched = frames_on >= latched_seconds * rate;
    frames_on = on ? frames_on + block_frames : 0.0;
    return on ? !before : before && was_latched;
}

void ported_effect::read_controls() noexcept {
    for (std::size_t i = 0; i < controls_.size(); ++i)
        if (controls_[i] != nullptr) values_[i] = double{*controls_[i]};
}

// The period of a note at the tempo, which is known; halved until a delay line can hold it.
double ported_effect::seconds_of(own_control division) const noexcept {
    const double index = std::round(own(division));
    const double last = static_cast<double>(note_values.size() - 1);
    const note_value& note =
        note_values[index > 0.0 ? static_cast<std::size_t>(std::min(index, last)) : 0];
    return program::note_seconds(1.0, note.part, note.length, *tempo_.bpm());
}

ported_effect::attribute_values ported_effect::delays() const noexcept {
    const auto [left, right] = elements_[delay_attribute];
    attribute_values seconds{values_[left], values_[right]};
    if (is_on(sync) && tempo_.bpm()) {
        seconds = {seconds_of(division_left), seconds_of(division_right)};
        for (double& s : seconds)
            while (s > longest_delay) s /= 2.0;
    }
    if (is_on(link)) seconds[1] = seconds[0];
    return seconds;
}

ported_effect::attribute_values ported_effect::values_of(std::size_t attribute) const noexcept {
    if (attribute == delay_attribute) return delays();
    const double value = values_[elements_[attribute][0]];
    if (attribute == mod_freq_attribute && is_on(mod_sync) && tempo_.bpm())
        return {1.0 / seconds_of(mod_division)};
    // Noise would never ring out.
    if (attribute == noise_attribute && !is_on(enabled)) return {};
    // LV2: a toggled port is on above 0. The attribute truncates, so 0.5 would be off, and a choice
    // that a host has scaled to and fro may lie a little below its integer.
    if (attribute_table[attribute].kind == attribute_kind::toggle)
        return {value <= 0.0 ? 0.0 : 1.0};
    if (attribute_table[attribute].kind == attribute_kind::choice) return {std::round(value)};
    return {value};
}

void ported_effect::start() {
    for (std::size_t i = 0; i < attribute_count; ++i) {
        sent_[i] = values_of(i);
        driver_->jump_to(i, sent_[i]);
    }
    driver_->start();
    bypass_.start(is_on(enabled));
    is_new_ = false;
}

void ported_effect::set_changed() {
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const attribute_values now = values_of(i);
        if (!differs(now[0], sent_[i][0]) && !differs(now[1], sent_[i][1])) continue;
        sent_[i] = now;
        driver_->set(i, now);
    }
}

void ported_effect::run_to(std::size_t begin, std::size_t end) {
    if (is_new_)
        start();
    else
        set_changed();
    std::size_t done = begin;
    do {
        const std::size_t count = std::min(end - done, sub_block_frames);
        process_sub_block(done, count);
        done += count;
    } while (done < end);
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
    const bool passes_by = !bypass_.is_out_of_the_way(is_on(enabled));
    for (std::size_t i = 0; passes_by && i < frames; ++i) {
        const double share = bypass_.next_share(is_on(enabled));
        for (std::size_t c = 0; c < 2; ++c) {
            dry_[c][i] = sub_block_[c][i] * (1.0 - share);
            sub_block_[c][i] *= share;
        }
    }
    double* const channels[2] = {sub_block_[0].data(), sub_block_[1].data()};
    const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
    driver_->core.perform(bundle, bundle);
    for (std::size_t c = 0; c < 2; ++c) {
        float* const out = audio_[out_left + c];
        for (std::size_t i = 0; i < frames; ++i) {
            const auto y =
                static_cast<float>(passes_by ? sub_block_[c][i] + dry_[c][i] : sub_block_[c][i]);
            peaks_[c] = std::max(peaks_[c], std::abs(y));
            if (out != nullptr) out[begin + i] = y;
        }
    }
}

void ported_effect::write_readouts(std::size_t frames) noexcept {
    const auto tell = [this](readout_port which, float value) {
        if (readouts_[which] != nullptr) *readouts_[which] = value;
    };
    const orvane::blocks::vesk::Vesk& engine = *driver_->core.engine;
    const orvane::blocks::vesk::Pair seconds = engine.delay_heard();
    tell(delay_read_left, seconds[0]);
    tell(delay_read_right, seconds[1]);
    tell(gate_gain, engine.gate_on ? engine.gate_gain : 1.0f);
    tell(gain_reduction, engine.duck_on ? std::abs(engine.ducker.reduction_db[0]) : 0.0f);
    if (frames == 0) return;
    for (std::size_t c = 0; c < 2; ++c) {
        const float db = 20.0f * std::log10(std::max(peaks_[c], 1e-6f));
        tell(c == 0 ? peak_left : peak_right, db);
    }
}

void ported_effect::show_echoes(std::size_t frames) noexcept {
    const orvane::blocks::vesk::Vesk& engine = *driver_->core.engine;
    const orvane::blocks::vesk::Pair seconds = engine.delay_heard();
    constexpr auto pingpong = static_cast<double>(vesk::channel_mode::pingpong);
    display_.show({.delay = {seconds[0], seconds[1]},
                   .feedback = static_cast<float>(sent_[feedback_attribute][0]),
                   .reduction_db = engine.duck_on ? engine.ducker.reduction_db[0] : 0.0f,
                   .pingpong = sent_[channel_mode_attribute][0] == pingpong,
                   .enabled = is_on(enabled)},
                  frames);
}

}  // namespace kv7::orv::lv2
