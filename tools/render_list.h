// The files that one command renders: the lines of a list, or everything in a folder.
#pragma once

#include <string>
#include <vector>

#include "tools/render_options.h"

namespace program {

struct list_entry {
    std::string input;
    std::string output;
    std::vector<std::string> settings;  // NAME=VALUE, after those of the command line
};

// Lines `INPUT tab OUTPUT [tab SETTINGS]`, settings separated by semicolons or tabs; "-" is the
// standard input. Throws usage_error with file and line, failure when the file can't be read.
std::vector<list_entry> read_list(const std::string& file);

// A sound file, or all below a folder: the same names below `into`. Throws failure.
std::vector<list_entry> list_folder(const std::string& input, const std::string& into);

// Throws usage_error when one file would be written twice, or is read by another entry.
void check_outputs(const std::vector<list_entry>& entries);

}  // namespace program
