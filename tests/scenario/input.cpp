// Makes a scenario's input samples.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <stdexcept>

#include "scenario.h"

namespace scenario {

std::vector<float> read_floats(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) throw std::runtime_error(path + ": cannot be read");
    std::vector<float> values(static_cast<std::size_t>(file.tellg()) / sizeof(float));
    file.seekg(0);
    file.read(reinterpret_cast<char*>(values.data()),
              static_cast<std::streamsize>(values.size() * sizeof(float)));
    return values;
}

std::vector<Frame> make_input(const Scenario& s) {
    const auto& words = s.input;
    const auto has = [&](const char* name, std::size_t arguments) {
        if (words[0] != name) return false;
        if (words.size() <= arguments)
            throw std::runtime_error("input " + words[0] + " needs " + std::to_string(arguments) +
                                     " numbers");
        return true;
    };
    const auto real = [&](std::size_t i) { return number<double>(words[i]); };
    const auto whole = [&](std::size_t i) { return number<std::uint64_t>(words[i]); };

    std::vector<Frame> input(s.frames);
    if (has("silence", 0)) return input;
    if (has("impulse", 3)) {
        if (whole(1) < s.frames)
            input[whole(1)] = {static_cast<float>(real(2)), static_cast<float>(real(3))};
    } else if (has("sine", 3)) {
        const double frequencies[2] = {real(1), real(2)};
        const double level = real(3);
        const auto sine = [&](double f, std::size_t n) {
            const double turn = 2.0 * std::numbers::pi * f * static_cast<double>(n) / s.rate;
            return static_cast<float>(level * std::sin(turn));
        };
        for (std::size_t n = 0; n < input.size(); ++n)
            input[n] = {sine(frequencies[0], n), sine(frequencies[1], n)};
    } else if (has("noise", 2) || has("burst", 4)) {
        const bool burst = words[0] == "burst";
        const std::uint64_t on = burst ? whole(3) : 1;
        const std::uint64_t period = std::max<std::uint64_t>(burst ? on + whole(4) : 1, 1);
        std::uint64_t states[2] = {whole(1), whole(1) + 1};
        const double level = real(2);
        const auto next = [&](std::uint64_t& state) {
            state = state * 6364136223846793005U + 1442695040888963407U;
            const auto top = static_cast<double>(state >> 40);
            return static_cast<float>((top / 16777216.0 * 2.0 - 1.0) * level);
        };
        for (std::size_t n = 0; n < input.size(); ++n) {
            const float gain = n % period < on ? 1.0f : 0.0f;
            input[n].left = next(states[0]) * gain;
            input[n].right = next(states[1]) * gain;
        }
    } else if (has("file", 1)) {
        const std::vector<float> samples = read_floats(s.folder + words[1]);
        for (std::size_t n = 0; n < input.size() && 2 * n + 1 < samples.size(); ++n)
            input[n] = {samples[2 * n], samples[2 * n + 1]};
    } else {
        throw std::runtime_error("unknown input '" + words[0] + "'");
    }
    return input;
}

}  // namespace scenario
