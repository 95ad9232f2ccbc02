#include "port_list.h"

namespace kv7::orv::lv2 {
namespace {

constexpr std::array<const char*, list_length> side_names{"left", "right"};

bool is_list(control_port port) {
    return attribute_table[port.attribute].kind == attribute_kind::list;
}

}  // namespace

std::vector<control_port> control_ports() {
    std::vector<control_port> ports;
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const std::size_t elements = is_list({i, 0}) ? list_length : 1;
        for (std::size_t element = 0; element < elements; ++element) ports.push_back({i, element});
    }
    return ports;
}

std::string symbol_of(control_port port) {
    const std::string name = attribute_table[port.attribute].info.name;
    return is_list(port) ? name + "_" + side_names[port.element] : name;
}

std::string label_of(control_port port) {
    const std::string label = attribute_table[port.attribute].info.label;
    return is_list(port) ? label + ", " + side_names[port.element] : label;
}

}  // namespace kv7::orv::lv2
