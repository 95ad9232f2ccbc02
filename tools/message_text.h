// Reads what a patch author would type: the value of an attribute, or a message. Names and types
// come from the class as the host knows it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"
#include "tools/value_text.h"

namespace program {

// Ready to send. When the selector is the name of an attribute, the message sets it.
struct message {
    std::string selector;
    tesk::atom_list values;
};

// Names of choices become indices, on and off 1 and 0. Throws bad_text.
message read_setting(const tesk::class_info& of_class, std::string_view attribute,
                     std::string_view values, const value_rules& rules = {});

// Reads `feedback 0.9` or `delay 0.25, 0.375` like read_setting and other messages like the host.
// Private messages are errors, so are arguments of messages that take none. Throws bad_text.
message read_message(const tesk::class_info& of_class, std::string_view text,
                     const value_rules& rules = {});

// Replaces an earlier setting of the same attribute, so that the box names each at most once.
void add_setting(std::vector<message>& settings, message added);

// `orv.device.vesk~ @feedback 0.8 @delay 0.25 0.5`
std::string box_text(const std::string& class_name, const std::vector<message>& settings);

}  // namespace program
