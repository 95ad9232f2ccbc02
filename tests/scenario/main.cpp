// scenario engine|device SCENARIO OUT: plays a scenario into raw interleaved stereo, 32-bit floats
//   from the bare engine, 64-bit floats from the device.
// scenario tables OUT: the built-in tables.
// scenario refresh FOLDER: renders anew. Each NAME.txt in the folder gets its NAME.f32, 32-bit
//   floats from the device where NAME begins with "device"; in a file of many scenarios (they begin
//   with "scenario engine|device HASH") the hashes are rewritten. Nothing is written unless every
//   scenario can be read and played.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/sample_sources.h"
#include "scenario.h"

namespace {

using Bytes = std::string;

template <class T>
Bytes bytes_of(const std::vector<T>& values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

std::vector<float> narrowed(const std::vector<double>& values) {
    std::vector<float> narrow;
    for (const double x : values) narrow.push_back(static_cast<float>(x));
    return narrow;
}

void write(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << bytes).flush()) throw std::runtime_error(path + ": cannot be written");
}

Bytes tables() {
    using namespace orvane::blocks::vesk;
    Bytes all;
    for (const auto& table : noise_sources()) all += bytes_of(table);
    for (const auto& table : wobble_sources()) all += bytes_of(table);
    return all;
}

// The text of a file of many scenarios with the hashes of what they play now.
Bytes with_new_hashes(const std::string& path, const std::vector<scenario::Scenario>& all) {
    std::ifstream file(path);
    std::ostringstream text;
    auto next = all.begin();
    std::string line;
    for (int n = 1; std::getline(file, line); ++n) {
        if (next != all.end() && next->line == n) {
            char hash[17];
            std::snprintf(hash, sizeof hash, "%016llx",
                          static_cast<unsigned long long>(scenario::hash_of(play(*next))));
            line = std::string("scenario ") + (next->on_device ? "device " : "engine ") + hash;
            ++next;
        }
        text << line << '\n';
    }
    return text.str();
}

void refresh(const std::string& folder) {
    std::map<std::string, Bytes> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::filesystem::path path = entry.path();
        if (path.extension() != ".txt") continue;
        auto all = scenario::read_scenarios(path.string());
        if (all.size() > 1) {
            files[path.string()] = with_new_hashes(path.string(), all);
            continue;
        }
        all[0].on_device = path.filename().string().starts_with("device");
        files[path.replace_extension(".f32").string()] = bytes_of(narrowed(scenario::play(all[0])));
    }
    if (files.empty()) throw std::runtime_error(folder + ": no scenarios");
    for (const auto& [path, bytes] : files) write(path, bytes);
    std::printf("%zu files written\n", files.size());
}

int run(const std::vector<std::string>& words) {
    const std::string mode = words.empty() ? "" : words[0];
    if ((mode == "engine" || mode == "device") && words.size() == 3) {
        scenario::Scenario s = scenario::read_scenarios(words[1]).front();
        s.on_device = mode == "device";
        const std::vector<double> out = play(s);
        write(words[2], s.on_device ? bytes_of(out) : bytes_of(narrowed(out)));
    } else if (mode == "tables" && words.size() == 2) {
        write(words[1], tables());
    } else if (mode == "refresh" && words.size() == 2) {
        refresh(words[1]);
    } else {
        std::fputs(
            "usage: scenario engine|device SCENARIO OUT\n       scenario tables OUT\n"
            "       scenario refresh FOLDER\n",
            stderr);
        return 2;
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
