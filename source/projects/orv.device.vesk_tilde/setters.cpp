#include "setters.h"

#include "choice_names.h"
#include "engine/vesk.h"

namespace kv7::orv {
namespace {

using orvane::blocks::vesk::broadcast;
using orvane::blocks::vesk::fast_db_to_gain;
using orvane::blocks::vesk::Pair;

// 64-bit values are narrowed to the nearest float before any arithmetic.
float narrow(double v) {
    return static_cast<float>(v);
}

// Noise and wobble are off at or below this amount.
constexpr double least_amount = 0.001;
bool is_on(double amount) {
    return amount > least_amount;
}

// Drivers hand over any integer as a choice; one that is none of its values changes nothing.
template <class Mode>
bool is_value(Mode v) {
    return static_cast<std::uint32_t>(v) < choice_count<Mode>;
}

}  // namespace

void set_mix(Vesk& e, double v) {
    e.set_dry_wet(narrow(v));
}

void set_channel_mode(Vesk& e, vesk::channel_mode v) {
    if (is_value(v)) e.channel_mode = v;
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

// One value counts for both sides; none changes nothing; only two are read.
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

void set_mod_waveform(Vesk& e, vesk::waveform_mode v) {
    if (is_value(v)) e.modulator.waveform = v;
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

void set_reverb_location(Vesk& e, vesk::location_mode v) {
    if (!is_value(v)) return;
    if (v != e.reverb_location) e.reverb.clear();
    e.reverb_location = v;
}

void set_noise(Vesk& e, double v) {
    e.noise_on = is_on(v);
    e.noise_amount = narrow(v);
}
void set_noise_morph(Vesk& e, double v) {
    e.noise_bank.set_morph(narrow(v));
}

void set_wobble(Vesk& e, double v) {
    e.wobble_on = is_on(v);
    e.wobble_amount = narrow(v);
}
void set_wobble_morph(Vesk& e, double v) {
    e.wobble_bank.set_morph(narrow(v));
}

void set_width(Vesk& e, double v) {
    e.width = narrow(v);
}

void set_drywetmode(Vesk& e, vesk::dry_wet_mode v) {
    if (is_value(v)) e.set_dry_wet(v);
}

int stages_of_amount(double v) {
    return is_on(v) ? 1 : 0;
}
int stages_of_reverb(double v) {
    return narrow(v) != 0.0f ? 1 : 0;
}
int stages_of_noise_morph(double v) {
    return static_cast<int>(decltype(Vesk::noise_bank)::index_at(narrow(v)));
}
int stages_of_wobble_morph(double v) {
    return static_cast<int>(decltype(Vesk::wobble_bank)::index_at(narrow(v)));
}

}  // namespace kv7::orv
