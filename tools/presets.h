// Named settings: text files with a title in their first line and one setting a line.
//   # Title: what it is
//   delay 0.25 0.5
#pragma once

#include <string>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"

namespace program {

struct preset {
    std::string name;   // of the file, without folder and suffix
    std::string title;  // the first line's comment
};

std::vector<preset> list_presets();  // those of the package, by name; throws failure

// By name, or a file when it has a slash or ends in .txt. Throws usage_error for a name that isn't
// there, failure for a file that can't be read.
std::vector<message> read_preset(const tesk::class_info& of_class, const std::string& name_or_file);

}  // namespace program
