// scenario engine|device SCENARIO OUT: plays a scenario into raw interleaved stereo, 32-bit floats
// from the bare engine, 64-bit floats from the device. scenario tables OUT: the built-in tables.
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/sample_sources.h"
#include "scenario.h"

namespace {

template <class T>
void write(const std::string& path, const std::vector<T>& values) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(values.data()),
               static_cast<std::streamsize>(values.size() * sizeof(T)));
    if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

int run(const std::vector<std::string>& words) {
    const std::string mode = words.empty() ? "" : words[0];
    const bool plays = (mode == "engine" || mode == "device") && words.size() == 3;
    if (!plays && !(mode == "tables" && words.size() == 2)) {
        std::fputs("usage: scenario engine|device SCENARIO OUT\n       scenario tables OUT\n",
                   stderr);
        return 2;
    }
    if (mode == "engine") {
        write(words[2], scenario::play_engine(scenario::read_scenario(words[1])));
    } else if (mode == "device") {
        write(words[2], scenario::play_device(scenario::read_scenario(words[1])));
    } else {
        std::vector<float> all;
        for (const auto& table : orvane::blocks::vesk::noise_sources())
            all.insert(all.end(), table.begin(), table.end());
        for (const auto& table : orvane::blocks::vesk::wobble_sources())
            all.insert(all.end(), table.begin(), table.end());
        write(words[1], all);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "scenario: %s\n", e.what());
        return 1;
    }
}
