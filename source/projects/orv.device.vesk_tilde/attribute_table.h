// The object's thirty attributes: what registration, help texts, documentation and every driver
// read, and nothing repeats.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "attribute_row.h"
#include "setters.h"

namespace kv7::orv {

using orvane::blocks::vesk::Parameter;

// In the order of registration.
inline constexpr std::array attribute_table{
    rows::continuous({"mix", "Dry/wet", "Sets the dry/wet mix of the output signal"},
                     {set_mix, Parameter::dry_wet}, 1.0, 0.0, 1.0),
    rows::choice<vesk::channel_mode>({"channel_mode", "Channel mode", "Set the vesk channel mode."},
                                     set_channel_mode, vesk::channel_mode::stereo),
    rows::toggle({"gate", "Gate", "Enable/disable the output gate.", "Gate"}, set_gate),
    rows::continuous({"gate_threshold", "Gate threshold", "Set the gate threshold in dB.", "Gate"},
                     {set_gate_threshold, Parameter::gate_threshold}, 0.0, -60.0, 0.0, "dB"),
    rows::continuous(
        {"gate_release", "Gate release", "Set the gate release time in seconds.", "Gate"},
        {set_gate_release, Parameter::gate_release}, 0.05, 0.05, 3.0, "s"),
    rows::toggle(
        {"repitch", "Repitch",
         "This causes a pitch variation when changing the delay time, similar to the behavior "
         "of hardware delay units. When disabled, changing the delay time creates a crossfade "
         "between the new and old delay times."},
        set_repitch),
    rows::continuous({"feedback", "Feedback",
                      "Sets the amount of each channel's output that is fed back into its input."},
                     {set_feedback, Parameter::feedback}, 0.5, 0.0, 1.5),
    rows::toggle(
        {"fbinvert", "Invert feedback",
         "Enable/disable inverting the feedback signal before adding it back to the input. This "
         "can change the sound significantly for short delay times."},
        set_fbinvert),
    rows::list({"delay", "Delay times", "Sets the left and right delay time in seconds."},
               set_delay, 0.375, 0.001, 5.0, "s"),
    rows::continuous({"input", "Input gain", "Set the input gain in dB."},
                     {set_input, Parameter::input_gain}, 0.0, -40.0, 40.0, "dB"),
    rows::continuous({"output", "Output gain", "Set the output gain in dB."},
                     {set_output, Parameter::output_gain}, 0.0, -76.0, 12.0, "dB"),
    rows::toggle(
        {"duck", "Ducking",
         "When enabled, the wet signal will be proportionally reduced as long as there is an "
         "input signal.",
         "Ducking"},
        set_duck),
    rows::continuous(
        {"duck_threshold", "Ducking threshold", "Set the ducking threshold in dB.", "Ducking"},
        {set_duck_threshold, Parameter::duck_threshold}, 0.0, -60.0, 0.0, "dB"),
    rows::continuous(
        {"duck_release", "Ducking release", "Set the ducking release time in seconds.", "Ducking"},
        {set_duck_release, Parameter::duck_release}, 0.1, 0.02, 1.5, "s"),
    rows::toggle(
        {"clip", "Clip dry signal",
         "Apply the input gain to the dry signal as well, allowing distortion for an authentic "
         "hardware feel."},
        set_clip),
    rows::choice<vesk::waveform_mode>(
        {"mod_waveform", "Modulation waveform", "Set the modulation waveform.", "Modulation"},
        set_mod_waveform, vesk::waveform_mode::sine),
    rows::continuous({"mod_freq", "Modulation frequency",
                      "Set the frequency of the modulation oscillator in Hz.", "Modulation"},
                     {set_mod_freq, Parameter::mod_frequency}, 2.0, 0.01, 40.0, "Hz"),
    rows::continuous(
        {"mod_envelope", "Modulation envelope mix",
         "Blend between the modulation oscillator and an envelope follower.", "Modulation"},
        {set_mod_envelope, Parameter::mod_envelope}, 0.0, 0.0, 1.0),
    rows::continuous(
        {"mod_phase", "Modulation phase offset",
         "Adjust the amount of offset between the waveforms for the left and right channel. "
         "At 180 degrees, the channels will be perfectly out of phase.",
         "Modulation"},
        {set_mod_phase, Parameter::mod_phase}, 90.0, 0.0, 180.0, "degrees"),
    rows::continuous(
        {"mod_delay", "Modulation delay amount",
         "Adjust the amount of modulation that is applied to the delay time.", "Modulation"},
        {set_mod_delay, Parameter::mod_delay}, 0.0, 0.0, 1.0),
    rows::toggle(
        {"mod_mult", "Modulation times four",
         "Enable/disable scaling the delay time modulation depth by a factor of four. With "
         "short delay times, this produces deep flanging sounds.",
         "Modulation"},
        set_mod_mult),
    rows::continuous({"reverb", "Reverb amount", "Set the amount of reverb.", "Reverb"},
                     {set_reverb, Parameter::reverb_amount, stages_of_reverb}, 0.0, 0.0, 1.0),
    rows::continuous(
        {"reverb_decay", "Reverb decay", "Set the length of the reverb tail.", "Reverb"},
        {set_reverb_decay, Parameter::reverb_decay}, 0.5, 0.0, 1.0),
    rows::choice<vesk::location_mode>(
        {"reverb_location", "Reverb location",
         "Set the location in the processing chain where reverb is added.", "Reverb"},
        set_reverb_location, vesk::location_mode::post),
    rows::continuous(
        {"noise", "Noise amount", "Set the amount of noise added to the signal.", "Noise"},
        {set_noise, Parameter::noise_amount, stages_of_amount}, 0.0, 0.0, 1.0),
    rows::continuous(
        {"noise_morph", "Noise type morph", "Morph between different types of noise.", "Noise"},
        {set_noise_morph, Parameter::noise_morph, stages_of_noise_morph}, 0.0, 0.0, 1.0),
    rows::continuous(
        {"wobble", "Wobble amount",
         "Set the amount of wobble added to the signal. This adds irregular modulation of "
         "the delay time, simulating tape delays.",
         "Wobble"},
        {set_wobble, Parameter::wobble_amount, stages_of_amount}, 0.0, 0.0, 1.0),
    rows::continuous({"wobble_morph", "Wobble morph",
                      "Morph between different types of wobble modulation.", "Wobble"},
                     {set_wobble_morph, Parameter::wobble_morph, stages_of_wobble_morph}, 0.0, 0.0,
                     1.0),
    rows::continuous(
        {"width", "Stereo width",
         "Set the stereo width of the wet signal. 0 yields a mono signal whereas values "
         "from 1 to 2 create a widened stereo panorama."},
        {set_width, Parameter::width}, 1.0, 0.0, 2.0),
    rows::choice<vesk::dry_wet_mode>(
        {"drywetmode", "Dry/wet mode",
         "When equal-loudness is enabled, a 50/50 mix will sound equally loud for most signals."},
        set_drywetmode, vesk::dry_wet_mode::linear),
};

constexpr std::size_t attribute_count = attribute_table.size();

// The index of an attribute, attribute_count when there is none of the name.
constexpr std::size_t attribute_index(std::string_view name) noexcept {
    std::size_t i = 0;
    while (i < attribute_count && name != attribute_table[i].info.name) ++i;
    return i;
}

static_assert(
    [] {
        for (std::size_t i = 0; i < attribute_count; ++i)
            if (attribute_index(attribute_table[i].info.name) != i) return false;
        return true;
    }(),
    "no two attributes have one name");

// What the reference page says of the class.
namespace class_metadata {
constexpr const char* description = "A modulation delay effect";
constexpr const char* author = "Velmarine";
constexpr const char* tags = "effect";
}  // namespace class_metadata

}  // namespace kv7::orv
