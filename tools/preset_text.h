// Reads a preset for the renderer and for the plugin: a text file in UTF-8 with a title in its
// first line and one setting per line. What is not certain to be what its author meant is an error.
//   # Title: what it is
//   delay 0.25 0.5  # a comment
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace program {

enum class value_kind { number, whole_number, toggle, choice, unsupported };

// An attribute that a preset may set.
struct preset_attribute {
    std::string name{};
    value_kind kind = value_kind::number;
    double low = -std::numeric_limits<double>::infinity();  // limits of a number, or of each
    double high = std::numeric_limits<double>::infinity();  // element of a list
    std::size_t max_values = 1;                             // above 1 for a list
    std::vector<std::string> value_names{};                 // of a choice
};

struct preset_setting {
    std::size_t attribute;       // index
    std::vector<double> values;  // toggle: 0 or 1; choice: index in value_names; at least one
};

struct preset_title {
    std::string title;        // up to the colon
    std::string description;  // after it; may be empty
};

struct preset_text {
    preset_title title;
    std::vector<preset_setting> settings;  // each attribute at most once, in the file's order
};

// Throws failure that names file and line: no title, an unknown attribute, one set twice, a value
// that is missing, malformed or out of range, text that is not UTF-8, control characters.
preset_text read_preset_text(const std::string& file, std::span<const preset_attribute> attributes);

// The first line alone. Throws failure.
preset_title read_preset_title(const std::string& file);

}  // namespace program
