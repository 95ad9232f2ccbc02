// What the user asks for, read from the command line.
#pragma once

#include <string>
#include <variant>

#include "tools/render.h"

namespace program {

struct attributes_order {
    std::string object;  // file; "" for the one of the package
    bool json = false;
};

struct presets_order {};

struct text_order {
    std::string text;  // help or version, to be printed
};

using order = std::variant<render_order, attributes_order, presets_order, text_order>;

// The subcommand that failed texts begin with: "render", "attributes", "presets", else "vesk".
std::string subcommand_of(int count, const char* const* words);

order read_command_line(int count, const char* const* words);  // throws usage_error

}  // namespace program
