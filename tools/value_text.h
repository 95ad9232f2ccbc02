// Reads the value of an attribute as its user writes it, on the command line, in a preset and in a
// score: numbers with units, note values, names of choices, on and off. What is not certain to be
// meant is an error, never another value.
//   0.375   375ms   -6dB   50%   2Hz   1/8.   Triangle   off
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace program {

enum class value_kind { number, whole_number, toggle, choice, unsupported };

struct value_attribute {
    std::string name{};
    value_kind kind = value_kind::number;
    double low = -std::numeric_limits<double>::infinity();  // limits of a number, or of each
    double high = std::numeric_limits<double>::infinity();  // element of a list
    std::string unit{};                                     // "s", "Hz", "dB", "degrees" or none
    std::size_t max_values = 1;                             // above 1 for a list
    std::vector<std::string> value_names{};                 // of a choice
};

struct value_rules {
    std::optional<double> bpm{};  // quarter notes per minute, for note values
    // Set: values out of range are clamped, as the object does, and this gets a line for each.
    std::function<void(const std::string&)> clamp_warning{};
};

// Toggle: 0 or 1; choice: index in value_names. At least one value. Note values are times, or
// frequencies with that period. Throws bad_text without the attribute's name.
std::vector<double> read_values(const value_attribute& attribute, std::string_view text,
                                const value_rules& rules);

double read_bpm(std::string_view text);  // above 0, at most 1000; throws bad_text

// "no attribute named ...", with the nearest of the names if one is near.
std::string unknown_name(std::string_view what, std::string_view name,
                         const std::vector<std::string>& names, std::string_view list_command);

}  // namespace program
