// The plugin's ports, made from the attribute table: what the plugin reads and its bundle lists.
//
// By index: the audio ports, one control port for each element of each attribute in the order of
// registration, the triggers.
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
    std::size_t element;    // 0, in a list up to list_length - 1
};

// Control port n has the index audio_port_count + n.
std::vector<control_port> control_ports();

std::string symbol_of(control_port port);  // "feedback", "delay_left"
std::string label_of(control_port port);   // "Feedback", "Delay times, left"

// Behind the control ports.
enum trigger_port : std::size_t { clear, reset, trigger_count };
constexpr std::array<const char*, trigger_count> trigger_names{"clear", "reset"};

}  // namespace kv7::orv::lv2
