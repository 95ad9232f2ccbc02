// Reads a preset for the renderer and for the plugin: a text file in UTF-8 with a title in its
// first line, a category in the second and one setting per line. What is not certain to be what its
// author meant is an error.
//   # Title: what it is
//   # Category: Echo
//   delay 0.25 0.5  # a comment
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tools/value_text.h"

namespace program {

struct preset_setting {
    std::size_t attribute;       // index
    std::vector<double> values;  // toggle: 0 or 1; choice: index in value_names; at least one
};

struct preset_title {
    std::string title;        // up to the colon
    std::string description;  // after it; may be empty
    std::string category{};   // may be empty
};

struct preset_text {
    preset_title title;
    std::vector<preset_setting> settings;  // each attribute at most once, in the file's order
};

// Throws usage_error that names file and line: no title, an unknown attribute, one set twice, a
// value that is missing, malformed or out of range, text that is not UTF-8, control characters.
// Throws failure when the file can't be read.
preset_text read_preset_text(const std::string& file, std::span<const value_attribute> attributes,
                             const value_rules& rules = {});

// The first line alone. Throws as read_preset_text.
preset_title read_preset_title(const std::string& file);

}  // namespace program
