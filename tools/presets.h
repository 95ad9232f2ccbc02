// The presets of the package, and a preset as settings that can be sent to an instance.
#pragma once

#include <string>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"
#include "tools/preset_text.h"

namespace program {

struct listed_preset {
    std::string name;  // of the file, without folder and suffix
    preset_title title;
};

std::vector<listed_preset> list_presets();  // those of the package, by name; throws failure

preset_title title_of_preset(const std::string& name_or_file);  // as read_preset finds it

// By name, or a file when it has a slash or ends in .txt. Lists come first, as in the plugin: with
// repitch on, the tape head then starts on the delay time and doesn't glide to it.
// Throws usage_error for an unknown name or malformed text, failure for a file that can't be read.
std::vector<message> read_preset(const tesk::class_info& of_class, const std::string& name_or_file,
                                 const value_rules& rules);

}  // namespace program
