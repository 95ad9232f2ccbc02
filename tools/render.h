// Plays a sound file through the effect into another.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace program {

struct render_options {
    std::string input;  // "-" is the standard input
    std::string output;
    std::string object;                 // file; "" for the one of the package
    std::string preset;                 // name or file; "" for none
    std::vector<std::string> settings;  // NAME=VALUE
    std::string score;                  // file; "" for none
    std::vector<std::string> events;    // SECONDS MESSAGE
    std::string picture;                // .png or .svg; "" for none
    int vector_size = 64;               // frames
    std::optional<double> tail;         // s; unset: until the output is silent
    std::string subtype;                // "" for the format's default
    std::optional<std::uint64_t> seed;
    bool force = false;  // replace existing files
    bool quiet = false;
};

void render(const render_options& options);  // throws usage_error and failure

}  // namespace program
