// The plugin's ports, made from the attribute table; the plugin reads them, its bundle lists them.
//
// In order of index: the audio ports, a control port for each attribute in the order of
// registration (for a list one per element), the triggers.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "attribute_table.h"

namespace kv7::orv::lv2 {

constexpr const char* plugin_uri = "urn:orvane:vesk";

enum audio_port : std::size_t { in_left, in_right, out_left, out_right, audio_port_count };

struct control_port {
    std::size_t attribute;  // index in attribute_table
    std::size_t element;    // below list_length in a list, else 0
};

// Control port n has the index audio_port_count + n.
std::vector<control_port> control_ports();

std::string symbol_of(control_port port);  // "feedback", "delay_left"
std::string label_of(control_port port);   // "Feedback", "Delay times, left"

// After the control ports.
enum trigger_port : std::size_t { clear, reset, trigger_count };
constexpr std::array<const char*, trigger_count> trigger_names{"clear", "reset"};

}  // namespace kv7::orv::lv2
