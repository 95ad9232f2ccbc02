// Reads a preset: a text file with a title in its first line and one setting a line.
//   # Title: what it is
//   delay 0.25 0.5
#pragma once

#include <array>
#include <filesystem>
#include <string>

#include "attribute_table.h"

namespace kv7::orv::lv2 {

struct preset {
    std::string name;         // of the file, without folder and suffix
    std::string title;        // of the first line, up to the colon
    std::string description;  // of the first line, behind it
    // Of every attribute, its default where the file says nothing; the second counts for a list.
    std::array<std::array<double, list_length>, attribute_count> values;
};

// Throws std::runtime_error that names file, line and what is wrong there.
preset read_preset(const std::filesystem::path& file);

}  // namespace kv7::orv::lv2
