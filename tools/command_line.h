// Reads the command line.
#pragma once

#include <string>
#include <variant>

#include "tools/render_options.h"

namespace program {

struct attributes_options {
    std::string object;  // file; "" for the one of the package
    bool json = false;
};

struct presets_options {};

// Help or version.
struct text_options {
    std::string text;
};

// The options of the subcommand to run.
using options = std::variant<render_options, attributes_options, presets_options, text_options>;

// What error texts begin with: "render", "picture", "attributes" or "presets", else "vesk".
std::string subcommand_of(int count, const char* const* words);

options read_command_line(int count, const char* const* words);  // throws usage_error

}  // namespace program
