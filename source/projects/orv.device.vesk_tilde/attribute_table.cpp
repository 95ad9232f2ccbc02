#include "attribute_table.h"

namespace kv7::orv {
namespace {

constexpr std::array channel_mode_names{"stereo", "pingpong", "midside"};
constexpr std::array waveform_mode_names{"Sine",     "Triangle", "Saw up",
                                         "Saw down", "Square",   "Random"};
constexpr std::array location_mode_names{"Pre", "Post", "Feedback"};
constexpr std::array dry_wet_mode_names{"Linear", "Equal-loudness"};

constexpr attribute_row continuous(attribute_info info, double standard, double low, double high,
                                   const char* unit = "") {
    return {info, attribute_kind::continuous, standard, low, high, unit};
}
constexpr attribute_row toggle(attribute_info info) {
    return {info, attribute_kind::toggle, 0.0};
}
constexpr attribute_row choice(attribute_info info, int standard,
                               std::span<const char* const> names) {
    return {info,
            attribute_kind::choice,
            static_cast<double>(standard),
            0.0,
            static_cast<double>(names.size() - 1),
            "",
            names};
}
constexpr attribute_row list(attribute_info info, double standard, double low, double high,
                             const char* unit) {
    return {info, attribute_kind::list, standard, low, high, unit};
}

}  // namespace

constinit const std::array<attribute_row, attribute_count> attribute_table{{
    continuous({"mix", "Dry/wet", "Sets the dry/wet mix of the output signal"}, 1.0, 0.0, 1.0),
    choice({"channel_mode", "Channel mode", "Set the vesk channel mode."}, 0, channel_mode_names),
    toggle({"gate", "Gate", "Enable/disable the output gate.", "Gate"}),
    continuous({"gate_threshold", "Gate threshold", "Set the gate threshold in dB.", "Gate"}, 0.0,
               -60.0, 0.0, "dB"),
    continuous({"gate_release", "Gate release", "Set the gate release time in seconds.", "Gate"},
               0.05, 0.05, 3.0, "s"),
    toggle({"repitch", "Repitch",
            "This causes a pitch variation when changing the delay time, similar to the behavior "
            "of hardware delay units. When disabled, changing the delay time creates a crossfade "
            "between the new and old delay times."}),
    continuous({"feedback", "Feedback",
                "Sets the amount of each channel's output that is fed back into its input."},
               0.5, 0.0, 1.5),
    toggle({"fbinvert", "Invert feedback",
            "Enable/disable inverting the feedback signal before adding it back to the input. This "
            "can change the sound significantly for short delay times."}),
    list({"delay", "Delay times", "Sets the left and right delay time in seconds."}, 0.375, 0.001,
         5.0, "s"),
    continuous({"input", "Input gain", "Set the input gain in dB."}, 0.0, -40.0, 40.0, "dB"),
    continuous({"output", "Output gain", "Set the output gain in dB."}, 0.0, -76.0, 12.0, "dB"),
    toggle({"duck", "Ducking",
            "When enabled, the wet signal will be proportionally reduced as long as there is an "
            "input signal.",
            "Ducking"}),
    continuous(
        {"duck_threshold", "Ducking threshold", "Set the ducking threshold in dB.", "Ducking"}, 0.0,
        -60.0, 0.0, "dB"),
    continuous(
        {"duck_release", "Ducking release", "Set the ducking release time in seconds.", "Ducking"},
        0.1, 0.02, 1.5, "s"),
    toggle({"clip", "Clip dry signal",
            "Apply the input gain to the dry signal as well, allowing distortion for an authentic "
            "hardware feel."}),
    choice({"mod_waveform", "Modulation waveform", "Set the modulation waveform.", "Modulation"}, 0,
           waveform_mode_names),
    continuous({"mod_freq", "Modulation frequency",
                "Set the frequency of the modulation oscillator in Hz.", "Modulation"},
               2.0, 0.01, 40.0, "Hz"),
    continuous({"mod_envelope", "Modulation envelope mix",
                "Blend between the modulation oscillator and an envelope follower.", "Modulation"},
               0.0, 0.0, 1.0),
    continuous({"mod_phase", "Modulation phase offset",
                "Adjust the amount of offset between the waveforms for the left and right channel. "
                "At 180 degrees, the channels will be perfectly out of phase.",
                "Modulation"},
               90.0, 0.0, 180.0, "degrees"),
    continuous({"mod_delay", "Modulation delay amount",
                "Adjust the amount of modulation that is applied to the delay time.", "Modulation"},
               0.0, 0.0, 1.0),
    toggle({"mod_mult", "Modulation times four",
            "Enable/disable scaling the delay time modulation depth by a factor of four. With "
            "short delay times, this produces deep flanging sounds.",
            "Modulation"}),
    continuous({"reverb", "Reverb amount", "Set the amount of reverb.", "Reverb"}, 0.0, 0.0, 1.0),
    continuous({"reverb_decay", "Reverb decay", "Set the length of the reverb tail.", "Reverb"},
               0.5, 0.0, 1.0),
    choice({"reverb_location", "Reverb location",
            "Set the location in the processing chain where reverb is added.", "Reverb"},
           1, location_mode_names),
    continuous({"noise", "Noise amount", "Set the amount of noise added to the signal.", "Noise"},
               0.0, 0.0, 1.0),
    continuous(
        {"noise_morph", "Noise type morph", "Morph between different types of noise.", "Noise"},
        0.0, 0.0, 1.0),
    continuous({"wobble", "Wobble amount",
                "Set the amount of wobble added to the signal. This adds irregular modulation of "
                "the delay time, simulating tape delays.",
                "Wobble"},
               0.0, 0.0, 1.0),
    continuous({"wobble_morph", "Wobble morph",
                "Morph between different types of wobble modulation.", "Wobble"},
               0.0, 0.0, 1.0),
    continuous({"width", "Stereo width",
                "Set the stereo width of the wet signal. 0 yields a mono signal whereas values "
                "from 1 to 2 create a widened stereo panorama."},
               1.0, 0.0, 2.0),
    choice(
        {"drywetmode", "Dry/wet mode",
         "When equal-loudness is enabled, a 50/50 mix will sound equally loud for most signals."},
        0, dry_wet_mode_names),
}};

std::size_t attribute_index(std::string_view name) noexcept {
    std::size_t i = 0;
    while (i < attribute_count && name != attribute_table[i].info.name) ++i;
    return i;
}

}  // namespace kv7::orv
