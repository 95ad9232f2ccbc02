// Reads what a patch author would type: a value for an attribute, or a message. What exists and
// which values it takes is asked of the class that the host knows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"

namespace program {

// Ready to be sent; the selector of an attribute sets it.
struct message {
    std::string selector;
    tesk::atom_list values;
};

// Value names have become their indices and "on" is 1. Throws bad_text.
message read_setting(const tesk::class_info& of_class, std::string_view attribute,
                     std::string_view values);

// The same for `feedback 0.9` or `delay 0.25, 0.375`; other messages as the host reads them.
// Private messages are refused. Throws bad_text.
message read_message(const tesk::class_info& of_class, std::string_view text);

// Later settings of one attribute replace earlier ones, so that each is typed once.
void add_setting(std::vector<message>& settings, message added);

// `orv.device.vesk~ @feedback 0.8 @delay 0.25 0.5`
std::string box_text(const std::string& class_name, const std::vector<message>& settings);

}  // namespace program
