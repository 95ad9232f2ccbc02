// Explains what a live host has played: finds the block at whose top each change of a control came,
// such that the plugin run by itself gives the recorded output throughout.
//
//   live_check RECORDED RATE BLOCK SETTING ... -- SETTING ...
//
// RECORDED: raw 32-bit floats, of each frame both inputs and both outputs, from the top of a block.
// Settings read symbol=value; those behind -- came one after the other while it played.
#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "loaded_plugin.h"

namespace kv7::orv::lv2 {
namespace {

// The recorder rounds input and output to 32 bits of a whole number.
constexpr float tolerance = 1e-6f;

struct setting {
    std::string symbol;
    float value;
};

struct change {
    std::size_t block;
    setting what;
};

setting read_setting(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw std::runtime_error(text + ": expected symbol=value");
    return {text.substr(0, equals), std::stof(text.substr(equals + 1))};
}

struct recorded {
    double rate;         // Hz
    std::size_t frames;  // of a block
    std::vector<std::array<float, 4>> samples;

    std::size_t blocks() const { return samples.size() / frames; }

    // The first block that the plugin plays otherwise, with these settings and changes.
    std::size_t first_difference(const std::vector<setting>& start,
                                 const std::vector<change>& changes) const {
        LoadedPlugin plugin(rate);
        for (const setting& s : start) plugin.at(s.symbol) = s.value;
        std::array<std::vector<float>, 4> buffers;
        for (std::size_t i = 0; i < 4; ++i) {
            buffers[i].resize(frames);
            plugin.connect(i, buffers[i].data());
        }
        plugin.activate();
        // The host has run for longer than any delay when the recording begins.
        for (double seconds = 0.0; seconds < 1.0; seconds += static_cast<double>(frames) / rate)
            plugin.run(frames);
        auto next = changes.begin();
        for (std::size_t block = 0; block < blocks(); ++block) {
            for (; next != changes.end() && next->block == block; ++next)
                plugin.at(next->what.symbol) = next->what.value;
            const auto* const frame = &samples[block * frames];
            for (std::size_t i = 0; i < frames; ++i)
                for (std::size_t c = 0; c < 2; ++c) buffers[c][i] = frame[i][c];
            plugin.run(frames);
            for (std::size_t i = 0; i < frames; ++i)
                for (std::size_t c = 2; c < 4; ++c)
                    if (!(std::abs(buffers[c][i] - frame[i][c]) <= tolerance)) return block;
        }
        return blocks();
    }
};

void explain(const recorded& played, const std::vector<setting>& start,
             const std::vector<setting>& later) {
    std::vector<change> changes;
    std::size_t first = played.first_difference(start, changes);
    for (const setting& next : later) {
        const std::string text = next.symbol + "=" + std::to_string(next.value);
        if (first == played.blocks()) throw std::runtime_error(text + " was never heard");
        const std::size_t earliest = changes.empty() ? 0 : changes.back().block;
        changes.push_back({first, next});
        // Some changes are heard a delay after they came.
        std::size_t reached = played.first_difference(start, changes);
        while (reached <= first + 1 && reached < played.blocks() &&
               changes.back().block > earliest) {
            --changes.back().block;
            reached = played.first_difference(start, changes);
        }
        if (reached <= first)
            throw std::runtime_error("block " + std::to_string(first) +
                                     ": other samples than the plugin's, and not by " + text);
        first = reached;
        std::cout << "block " << changes.back().block << ": " << text << '\n';
    }
    if (first != played.blocks())
        throw std::runtime_error("block " + std::to_string(first) +
                                 ": other samples than the plugin's");
}

recorded read_recorded(const char* file, double rate, std::size_t frames) {
    std::ifstream in(file, std::ios::binary | std::ios::ate);
    if (!in) throw std::runtime_error(std::string(file) + ": could not be opened");
    recorded made{rate, frames, {}};
    made.samples.resize(static_cast<std::size_t>(in.tellg()) / sizeof made.samples[0]);
    in.seekg(0);
    in.read(reinterpret_cast<char*>(made.samples.data()),
            static_cast<std::streamsize>(made.samples.size() * sizeof made.samples[0]));
    if (!in) throw std::runtime_error(std::string(file) + ": could not be read");
    for (std::size_t c = 0; c < 4; ++c) {
        float loudest = 0.0f;
        for (const auto& frame : made.samples) loudest = std::max(loudest, std::abs(frame[c]));
        if (loudest < 0.1f)
            throw std::runtime_error("channel " + std::to_string(c) + " is all but silent");
    }
    return made;
}

}  // namespace
}  // namespace kv7::orv::lv2

int main(int count, char** words) {
    using namespace kv7::orv::lv2;
    try {
        if (count < 5) throw std::runtime_error("expected RECORDED RATE BLOCK SETTING ... -- ...");
        const recorded played = read_recorded(words[1], std::stod(words[2]), std::stoul(words[3]));
        std::array<std::vector<setting>, 2> settings;
        bool later = false;
        for (int i = 4; i < count; ++i)
            if (const std::string word = words[i]; word == "--")
                later = true;
            else
                settings[later ? 1 : 0].push_back(read_setting(word));
        explain(played, settings[0], settings[1]);
        std::cout << played.blocks() << " blocks of " << played.frames
                  << " frames are the plugin's\n";
    } catch (const std::exception& wrong) {
        std::cerr << "live_check: " << wrong.what() << '\n';
        return 1;
    }
}
