// The plugin's ports: those of the attribute table and the plugin's own. The plugin reads them, its
// bundle lists them.
//
// In order of index: the audio ports, the events, the controls in the order in which one turns
// them, the triggers, the readouts.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "attribute_table.h"
#include "tools/note_value.h"

namespace kv7::orv::lv2 {

constexpr const char* plugin_uri = "urn:orvane:vesk";

enum audio_port : std::size_t { in_left, in_right, out_left, out_right, audio_port_count };

// An atom sequence: the host's time:Position. After the audio ports.
constexpr std::size_t event_port = audio_port_count;

// The controls that are no attributes.
enum own_control : std::size_t {
    enabled,        // off: the input passes dry and the lines ring out
    link,           // the right side's time follows the left one's
    sync,           // the delay times are notes at the host's tempo
    division_left,  // by index in note_values
    division_right,
    mod_sync,  // the modulation's period is a note at the host's tempo
    mod_division,
    free_wheeling,  // the host renders as fast as it can: nobody looks at pictures
    own_control_count
};

struct note_value {
    const char* name;
    double part;  // of 1 / part of a whole note
    program::note_length length;
};

// From short to long. A host drops one of two names that differ by what follows a digit, such as
// "1/8" and "1/8t".
using program::note_length;
inline constexpr std::array note_values{
    note_value{"Triplet 1/32", 32, note_length::triplet},
    note_value{"1/32", 32, note_length::plain},
    note_value{"Triplet 1/16", 16, note_length::triplet},
    note_value{"Dotted 1/32", 32, note_length::dotted},
    note_value{"1/16", 16, note_length::plain},
    note_value{"Triplet 1/8", 8, note_length::triplet},
    note_value{"Dotted 1/16", 16, note_length::dotted},
    note_value{"1/8", 8, note_length::plain},
    note_value{"Triplet 1/4", 4, note_length::triplet},
    note_value{"Dotted 1/8", 8, note_length::dotted},
    note_value{"1/4", 4, note_length::plain},
    note_value{"Triplet 1/2", 2, note_length::triplet},
    note_value{"Dotted 1/4", 4, note_length::dotted},
    note_value{"1/2", 2, note_length::plain},
    note_value{"Triplet 1/1", 1, note_length::triplet},
    note_value{"Dotted 1/2", 2, note_length::dotted},
    note_value{"1/1", 1, note_length::plain},
    note_value{"Dotted 1/1", 1, note_length::dotted},
};

struct control_port {
    std::string symbol;      // "feedback", "delay_left"
    std::string name;        // "Feedback", "Delay time left"
    std::string short_name;  // at most 16 characters, as LV2 asks
    std::string comment;
    attribute_kind kind;  // of a list's element: continuous
    double standard;
    double low;  // 0 and 1 for a toggle
    double high;
    const char* unit;                         // as in the attribute table
    std::vector<const char*> value_names{};   // of a choice
    std::size_t attribute = attribute_count;  // index in attribute_table, or
    std::size_t element = 0;                  // below list_length in a list
    own_control own = own_control_count;
};

// Control port n has the index first_control + n.
constexpr std::size_t first_control = event_port + 1;
const std::vector<control_port>& control_ports();

enum trigger_port : std::size_t { clear, reset, trigger_count };

// What the plugin tells of itself after every block.
enum readout_port : std::size_t {
    delay_read_left,   // s
    delay_read_right,  // s
    gate_gain,         // 0 to 1; 1 while the gate is off
    gain_reduction,    // of the ducker, in dB, at least 0
    peak_left,         // of the output's block, in dBFS
    peak_right,
    readout_count
};
constexpr float lowest_peak_db = -120.0f;

// A trigger or a readout.
struct plain_port {
    const char* symbol;
    const char* name;
    const char* short_name;
    const char* comment;
    double low = 0.0;
    double high = 1.0;
    const char* unit = "";
};
extern const std::array<plain_port, trigger_count> trigger_ports;
extern const std::array<plain_port, readout_count> readout_ports;

}  // namespace kv7::orv::lv2
