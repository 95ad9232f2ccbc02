#include "port_list.h"

#include <string_view>

namespace kv7::orv::lv2 {
namespace {

// One entry a port, in the order in which one turns them. Of a list each element has its port.
struct entry {
    const char* symbol;
    const char* short_name = "";      // where the name is longer than 16 characters
    const char* attribute = nullptr;  // if its name is not the symbol
    std::size_t element = 0;
    const char* name = nullptr;     // if it is not the attribute's label
    const char* comment = nullptr;  // if it is not the attribute's description
    own_control own = own_control_count;
};

constexpr entry entries[] = {
    {.symbol = "enabled",
     .name = "Enabled",
     .comment = "Off: the input passes dry, and what is in the delay lines rings out.",
     .own = enabled},
    {.symbol = "mix", .comment = "0: the dry input alone, 1: the effect alone, as after a send."},
    {.symbol = "delay_left",
     .short_name = "Delay left",
     .attribute = "delay",
     .name = "Delay time left",
     .comment = "Sets the left delay time in seconds."},
    {.symbol = "delay_right",
     .short_name = "Delay right",
     .attribute = "delay",
     .element = 1,
     .name = "Delay time right",
     .comment = "Sets the right delay time in seconds."},
    {.symbol = "link",
     .name = "Link delays",
     .comment = "The right delay time follows the left one.",
     .own = link},
    {.symbol = "sync",
     .name = "Tempo sync",
     .comment = "The delay times are note values at the host's tempo. Those over 5 seconds are "
                "halved until they fit. The delay times in seconds count while no tempo is known.",
     .own = sync},
    {.symbol = "division_left",
     .short_name = "Note left",
     .name = "Note value left",
     .comment = "Sets the left delay time while it follows the tempo.",
     .own = division_left},
    {.symbol = "division_right",
     .short_name = "Note right",
     .name = "Note value right",
     .comment = "Sets the right delay time while it follows the tempo.",
     .own = division_right},
    {.symbol = "feedback",
     .comment = "How much of what is read goes back into the delay lines; over 1 it grows."},
    {.symbol = "fbinvert"},
    {.symbol = "repitch"},
    {.symbol = "channel_mode"},
    {.symbol = "input"},
    {.symbol = "clip"},
    {.symbol = "output"},
    {.symbol = "width"},
    {.symbol = "drywetmode"},
    {.symbol = "mod_delay", .short_name = "Mod. amount"},
    {.symbol = "mod_mult", .short_name = "Mod. times four"},
    {.symbol = "mod_waveform", .short_name = "Mod. waveform"},
    {.symbol = "mod_freq", .short_name = "Mod. frequency"},
    {.symbol = "mod_sync",
     .short_name = "Mod. tempo sync",
     .name = "Modulation tempo sync",
     .comment = "The modulation's period is a note value at the host's tempo. The frequency in Hz "
                "counts while no tempo is known.",
     .own = mod_sync},
    {.symbol = "mod_division",
     .short_name = "Mod. note",
     .name = "Modulation note value",
     .comment = "Sets the modulation's period while it follows the tempo.",
     .own = mod_division},
    {.symbol = "mod_phase", .short_name = "Mod. phase"},
    {.symbol = "mod_envelope", .short_name = "Mod. envelope"},
    {.symbol = "wobble"},
    {.symbol = "wobble_morph"},
    {.symbol = "reverb"},
    {.symbol = "reverb_decay"},
    {.symbol = "reverb_location",
     .comment = "Before the delay lines, after them, or in the feedback loop, where it may grow "
                "even at a feedback below 1."},
    {.symbol = "noise"},
    {.symbol = "noise_morph"},
    {.symbol = "gate", .comment = "Lets only input over the threshold into the delay lines."},
    {.symbol = "gate_threshold",
     .comment = "The level at which the gate opens; at 0 dB nothing passes. It closes 6 dB below."},
    {.symbol = "gate_release"},
    {.symbol = "duck"},
    {.symbol = "duck_threshold",
     .short_name = "Duck threshold",
     .comment = "Input over this level lowers the wet signal; at 0 dB none does."},
    {.symbol = "duck_release", .short_name = "Duck release"},
    {.symbol = "free_wheeling",
     .name = "Free wheeling",
     .comment = "Hosts set it while they render faster than real time: no picture is drawn. The "
                "sound is the same.",
     .own = free_wheeling},
};

constexpr std::string_view attribute_of(const entry& e) {
    return e.attribute != nullptr ? e.attribute : e.symbol;
}

static_assert(
    [] {
        for (const attribute_row& row : attribute_table)
            for (std::size_t i = 0; i < (row.kind == attribute_kind::list ? list_length : 1); ++i) {
                std::size_t found = 0;
                for (const entry& e : entries)
                    found += e.own == own_control_count && attribute_of(e) == row.info.name &&
                             e.element == i;
                if (found != 1) return false;
            }
        return true;
    }(),
    "each attribute has its port, each element of a list one of its own");

control_port port_of_attribute(const entry& e) {
    const std::size_t index = attribute_index(attribute_of(e));
    const attribute_row& row = attribute_table[index];
    const bool is_list = row.kind == attribute_kind::list;
    const bool is_toggle = row.kind == attribute_kind::toggle;
    return {.symbol = e.symbol,
            .name = e.name != nullptr ? e.name : row.info.label,
            .short_name = e.short_name,
            .comment = e.comment != nullptr ? e.comment : row.info.description,
            .kind = is_list ? attribute_kind::continuous : row.kind,
            .standard = row.default_value,
            .low = row.low,
            .high = is_toggle ? 1.0 : row.high,
            .unit = row.unit,
            .value_names = {row.value_names.begin(), row.value_names.end()},
            .attribute = index,
            .element = e.element};
}

control_port port_of_own(const entry& e) {
    control_port made{.symbol = e.symbol,
                      .name = e.name,
                      .short_name = e.short_name,
                      .comment = e.comment,
                      .kind = attribute_kind::toggle,
                      .standard = e.own == enabled ? 1.0 : 0.0,
                      .low = 0.0,
                      .high = 1.0,
                      .unit = "",
                      .own = e.own};
    if (e.own == enabled) {
        // Not a toggle: a widely used framework starts every toggle as off, and then plays nothing
        // but the dry input.
        made.kind = attribute_kind::choice;
        made.value_names = {"Off", "On"};
    }
    if (e.own == division_left || e.own == division_right || e.own == mod_division) {
        made.kind = attribute_kind::choice;
        made.high = static_cast<double>(note_values.size() - 1);
        for (const note_value& note : note_values) {
            if (std::string_view(note.name) == "1/4")
                made.standard = static_cast<double>(made.value_names.size());
            made.value_names.push_back(note.name);
        }
    }
    return made;
}

std::vector<control_port> made_ports() {
    std::vector<control_port> ports;
    for (const entry& e : entries) {
        ports.push_back(e.own == own_control_count ? port_of_attribute(e) : port_of_own(e));
        if (ports.back().short_name.empty()) ports.back().short_name = ports.back().name;
    }
    return ports;
}

}  // namespace

const std::vector<control_port>& control_ports() {
    static const std::vector<control_port> ports = made_ports();
    return ports;
}

const std::array<plain_port, trigger_count> trigger_ports{{
    {"clear", "Clear", "Clear", "Empties the delay lines and the reverb at every press."},
    {"reset", "Reset", "Reset",
     "Returns the whole effect to its initial state at every press; settings stay."},
}};

const std::array<plain_port, readout_count> readout_ports{{
    {"delay_read_left", "Delay read left", "Read left",
     "The delay time that is being read: on its way after a change, moved by modulation.", 0.0, 8.0,
     "s"},
    {"delay_read_right", "Delay read right", "Read right",
     "The delay time that is being read: on its way after a change, moved by modulation.", 0.0, 8.0,
     "s"},
    {"gate_open", "Gate open", "Gate open", "How far the gate is open; 1 while it is off."},
    {"gain_reduction", "Gain reduction", "Reduction", "What the ducking takes from the wet signal.",
     0.0, 60.0, "dB"},
    {"peak_left", "Peak left", "Peak left", "The peak of the left output.", lowest_peak_db, 24.0,
     "dB"},
    {"peak_right", "Peak right", "Peak right", "The peak of the right output.", lowest_peak_db,
     24.0, "dB"},
}};

}  // namespace kv7::orv::lv2
