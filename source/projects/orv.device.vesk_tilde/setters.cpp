#include "setters.h"

namespace kv7::orv {
namespace {

using orvane::blocks::vesk::broadcast;
using orvane::blocks::vesk::fast_db_to_gain;
using orvane::blocks::vesk::Pair;
using orvane::blocks::vesk::Vesk;

// 64-bit values are narrowed to the nearest float before any arithmetic.
float narrow(double v) {
    return static_cast<float>(v);
}

// Noise and wobble rest at or below this amount.
constexpr double least_amount = 0.001;

// A choice by index; an index past the last one, or a negative one, changes nothing.
template <class Mode>
bool is_mode(std::int32_t v, Mode last) {
    return static_cast<std::uint32_t>(v) <= static_cast<std::uint32_t>(last);
}

void set_mix(Vesk& e, double v) {
    e.set_dry_wet(narrow(v));
}

void set_channel_mode(Vesk& e, std::int32_t v) {
    using vesk::channel_mode;
    if (is_mode(v, channel_mode::midside)) e.channel_mode = channel_mode{v};
}

void set_gate(Vesk& e, bool v) {
    if (v && !e.gate_on) e.reset_gate();
    e.gate_on = v;
}
void set_gate_threshold(Vesk& e, double v) {
    e.set_gate_threshold(narrow(v));
}
void set_gate_release(Vesk& e, double v) {
    e.set_gate_release(narrow(v));
}

void set_repitch(Vesk& e, bool v) {
    e.set_repitch(v);
}
void set_feedback(Vesk& e, double v) {
    e.feedback = narrow(v);
}
void set_fbinvert(Vesk& e, bool v) {
    e.feedback_invert = v;
}

// One value counts for both sides; none changes nothing; further ones are not read.
void set_delay(Vesk& e, std::span<const double> v) {
    if (v.empty()) return;
    e.delay_time[0] = narrow(v[0]);
    e.delay_time[1] = narrow(v[v.size() > 1 ? 1 : 0]);
}

void set_input(Vesk& e, double v) {
    e.input_gain = fast_db_to_gain(narrow(v));
}
void set_output(Vesk& e, double v) {
    e.output_gain = fast_db_to_gain(narrow(v));
}

void set_duck(Vesk& e, bool v) {
    if (v && !e.duck_on) e.ducker.reset();
    e.duck_on = v;
}
void set_duck_threshold(Vesk& e, double v) {
    e.ducker.threshold_db = broadcast<Pair>(narrow(v));
}
void set_duck_release(Vesk& e, double v) {
    e.ducker.set_release(narrow(v));
}

void set_clip(Vesk& e, bool v) {
    e.clip_dry = v;
}

void set_mod_waveform(Vesk& e, std::int32_t v) {
    using vesk::waveform_mode;
    if (is_mode(v, waveform_mode::random)) e.modulator.waveform = waveform_mode{v};
}
void set_mod_freq(Vesk& e, double v) {
    e.modulator.set_frequency(narrow(v));
}
void set_mod_envelope(Vesk& e, double v) {
    e.modulator.envelope_mix = narrow(v);
}
void set_mod_phase(Vesk& e, double v) {
    e.modulator.set_phase_offset(narrow(v));
}
void set_mod_delay(Vesk& e, double v) {
    e.mod_delay = narrow(v);
}
void set_mod_mult(Vesk& e, bool v) {
    e.mod_mult = v;
}

void set_reverb(Vesk& e, double v) {
    e.reverb_amount = narrow(v);
}
void set_reverb_decay(Vesk& e, double v) {
    e.reverb.decay = broadcast<Pair>(narrow(v));
}

void set_reverb_location(Vesk& e, std::int32_t v) {
    using vesk::location_mode;
    if (!is_mode(v, location_mode::feedback)) return;
    if (location_mode{v} != e.reverb_location) e.reverb.clear();
    e.reverb_location = location_mode{v};
}

void set_noise(Vesk& e, double v) {
    e.noise_on = v > least_amount;
    e.noise_amount = narrow(v);
}
void set_noise_morph(Vesk& e, double v) {
    e.noise_bank.set_morph(narrow(v));
}

void set_wobble(Vesk& e, double v) {
    e.wobble_on = v > least_amount;
    e.wobble_amount = narrow(v);
}
void set_wobble_morph(Vesk& e, double v) {
    e.wobble_bank.set_morph(narrow(v));
}

void set_width(Vesk& e, double v) {
    e.width = narrow(v);
}

void set_drywetmode(Vesk& e, std::int32_t v) {
    using vesk::dry_wet_mode;
    if (is_mode(v, dry_wet_mode::equal_loudness)) e.set_dry_wet(dry_wet_mode{v});
}

}  // namespace

constinit const std::array<attribute_setter, attribute_count> attribute_setters{
    set_mix,          set_channel_mode, set_gate,           set_gate_threshold,  set_gate_release,
    set_repitch,      set_feedback,     set_fbinvert,       set_delay,           set_input,
    set_output,       set_duck,         set_duck_threshold, set_duck_release,    set_clip,
    set_mod_waveform, set_mod_freq,     set_mod_envelope,   set_mod_phase,       set_mod_delay,
    set_mod_mult,     set_reverb,       set_reverb_decay,   set_reverb_location, set_noise,
    set_noise_morph,  set_wobble,       set_wobble_morph,   set_width,           set_drywetmode,
};

}  // namespace kv7::orv
