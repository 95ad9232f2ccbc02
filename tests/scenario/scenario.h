// A scenario: an input and a list of events, written in a small language of one directive a line.
//
//   rate R | frames N | vector N | seed S0 S1 | tables PATH
//   input silence | impulse FRAME L R | sine FL FR AMP | noise SEED AMP
//         | burst SEED AMP ON OFF | file PATH
//   at F set NAME V... | at F clear | at F reset | at F rate R
//
// '#' starts a comment; paths count from the scenario's folder. A file may hold many scenarios,
// each then opened by a line of its own:
//
//   scenario engine|device HASH
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/vesk.h"

namespace scenario {

using orvane::blocks::vesk::Frame;
using orvane::blocks::vesk::Vesk;

struct Event {
    enum class Kind { set, clear, reset, rate };
    std::uint64_t frame = 0;
    Kind kind = Kind::set;
    std::size_t attribute = 0;   // of set
    std::vector<double> values;  // of set; of rate: one
};

struct Scenario {
    int line = 1;            // of the file, where it begins
    bool on_device = false;  // through ramps, queue and vectors; otherwise on the bare engine
    std::uint64_t hash = 0;  // hash_of() what it plays, where the file states it
    double rate = 0.0;       // Hz
    std::uint64_t frames = 0;
    std::size_t vector_size = 64;
    std::vector<std::string> input{"silence"};  // the words of its directive
    std::string folder;                         // from which paths count
    std::optional<std::array<std::uint32_t, 2>> seed;
    std::string tables;         // path; empty: the built-in ones
    std::vector<Event> events;  // by frame, at equal frames in the order of the file
};

// At least one. Throws std::runtime_error with the file, the line and what is wrong.
std::vector<Scenario> read_scenarios(const std::string& path);
std::vector<Scenario> read_scenarios(std::istream& text, const std::string& path);

// All frames of the input. Throws std::runtime_error when a file cannot be read.
std::vector<Frame> make_input(const Scenario& scenario);

// Interleaved stereo. An engine plays frame by frame, or in blocks of at most block frames.
std::vector<double> play(const Scenario& scenario, std::size_t block = 0);

// An attribute's value by its setter, without clamp and ramp.
void set(Vesk& engine, std::size_t attribute, const std::vector<double>& values);

// FNV-1a, a frame at a time: two 32-bit floats as one little-endian word, -0 made +0.
std::uint64_t hash_of(const std::vector<double>& interleaved);

std::vector<float> read_floats(const std::string& path);

// The whole of a word as a number. Throws std::runtime_error when it is none.
template <class T, class... Base>
T number(const std::string& word, Base... base) {
    T value{};
    const char* const last = word.data() + word.size();
    const auto [end, error] = std::from_chars(word.data(), last, value, base...);
    if (error != std::errc() || end != last)
        throw std::runtime_error("'" + word + "' is not a " +
                                 (std::is_integral_v<T> ? "whole " : "") + "number");
    return value;
}

}  // namespace scenario
