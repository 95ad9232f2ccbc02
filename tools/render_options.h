// What the command line asks of a rendering.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace program {

struct render_options {
    std::string input;                  // "-" is the standard input
    std::string output;                 // "-" is the standard output; "": the picture alone
    std::string format = "wav";         // of the standard output: "wav" or "raw"
    std::string object;                 // file; "" for the one of the package
    std::string preset;                 // name or file; "" for none
    std::vector<std::string> settings;  // NAME=VALUE
    std::vector<std::string> scores;    // files
    std::vector<std::string> events;    // SECONDS MESSAGE
    std::string list;                   // file of INPUT, tab, OUTPUT lines; "" for none
    std::string into;                   // folder for the output; "" for none
    std::string picture;                // .png or .svg; "" for none
    int vector_size = 64;               // frames
    std::optional<double> tail;         // s; unset: until the output is silent
    std::optional<double> bpm;          // quarter notes per minute, for note values
    std::vector<int> channels;          // of the input, from 1 on; none: all
    std::string subtype;                // "" for the format's default
    std::optional<std::uint64_t> seed;
    bool dither = true;    // for samples of 16 bits
    bool clamp = false;    // values out of range are clamped, with a warning, not refused
    bool partial = false;  // of a damaged input, keep what can be read
    bool force = false;    // replace existing files
    bool quiet = false;
    bool json = false;           // one object a line in place of the summary
    bool skip_existing = false;  // of a list, leave outputs that are there
    int jobs = 1;                // worker processes for a list
};

}  // namespace program
