// A preset of the bundle, read from its text file: a value for every attribute.
#pragma once

#include <array>
#include <filesystem>
#include <string>

#include "attribute_table.h"

namespace kv7::orv::lv2 {

struct preset {
    std::string name;         // of the file, without folder and suffix; part of a URI
    std::string title;        // of the first line, up to the colon
    std::string description;  // of the first line, after it
    std::string category;     // of the second line; may be empty
    // The default where the file sets nothing; of a list both elements, else the first.
    std::array<std::array<double, list_length>, attribute_count> values;
};

// Throws std::runtime_error that names file, line and cause.
preset read_preset(const std::filesystem::path& file);

}  // namespace kv7::orv::lv2
