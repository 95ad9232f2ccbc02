// One setter for every attribute: turns an attribute value into writes on the engine's members.
//
// They run between two samples. A continuous value and a list's elements have been clamped to their
// range before; a choice is tested by its setter and dropped when it is none of its values.
#pragma once

#include <span>

#include "engine/modes.h"

namespace orvane::blocks::vesk {
struct Vesk;
}

namespace kv7::orv {

using orvane::blocks::vesk::Vesk;

void set_mix(Vesk& e, double v);
void set_channel_mode(Vesk& e, vesk::channel_mode v);
void set_gate(Vesk& e, bool v);
void set_gate_threshold(Vesk& e, double v);
void set_gate_release(Vesk& e, double v);
void set_repitch(Vesk& e, bool v);
void set_feedback(Vesk& e, double v);
void set_fbinvert(Vesk& e, bool v);
void set_delay(Vesk& e, std::span<const double> v);
void set_input(Vesk& e, double v);
void set_output(Vesk& e, double v);
void set_duck(Vesk& e, bool v);
void set_duck_threshold(Vesk& e, double v);
void set_duck_release(Vesk& e, double v);
void set_clip(Vesk& e, bool v);
void set_mod_waveform(Vesk& e, vesk::waveform_mode v);
void set_mod_freq(Vesk& e, double v);
void set_mod_envelope(Vesk& e, double v);
void set_mod_phase(Vesk& e, double v);
void set_mod_delay(Vesk& e, double v);
void set_mod_mult(Vesk& e, bool v);
void set_reverb(Vesk& e, double v);
void set_reverb_decay(Vesk& e, double v);
void set_reverb_location(Vesk& e, vesk::location_mode v);
void set_noise(Vesk& e, double v);
void set_noise_morph(Vesk& e, double v);
void set_wobble(Vesk& e, double v);
void set_wobble_morph(Vesk& e, double v);
void set_width(Vesk& e, double v);
void set_drywetmode(Vesk& e, vesk::dry_wet_mode v);

// Numbers for the stages that are in use at a value: off or on, or the pair of players.
int stages_of_amount(double v);  // noise, wobble
int stages_of_reverb(double v);
int stages_of_noise_morph(double v);
int stages_of_wobble_morph(double v);

}  // namespace kv7::orv
