// Run by the build: writes the bundle's Turtle files from the attribute table and the preset files.
//   write_turtle FOLDER BINARY MAJOR.MINOR.PATCH PRESET...
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "turtle.h"

namespace {

using kv7::orv::lv2::preset;

template <class Writer>
void write_file(const std::filesystem::path& file, Writer write) {
    std::ofstream out(file);
    write(out);
    out.close();
    if (!out) throw std::runtime_error(file.string() + ": could not be written");
}

void write_bundle(const std::vector<std::string>& arguments) {
    if (arguments.size() < 4)
        throw std::runtime_error("expected FOLDER BINARY MAJOR.MINOR.PATCH PRESET...");
    const std::filesystem::path folder = arguments[0];
    kv7::orv::lv2::version of_project{};
    if (std::sscanf(arguments[2].c_str(), "%d.%d.%d", &of_project.major, &of_project.minor,
                    &of_project.patch) != 3)
        throw std::runtime_error(arguments[2] + ": expected MAJOR.MINOR.PATCH");
    std::vector<preset> presets;
    for (std::size_t i = 3; i < arguments.size(); ++i)
        presets.push_back(kv7::orv::lv2::read_preset(arguments[i]));
    using namespace kv7::orv::lv2;
    write_file(folder / "manifest.ttl",
               [&](std::ostream& out) { write_manifest(out, arguments[1], presets); });
    write_file(folder / "vesk.ttl", [&](std::ostream& out) { write_plugin(out, of_project); });
    write_file(folder / "presets.ttl", [&](std::ostream& out) { write_presets(out, presets); });
}

}  // namespace

int main(int count, char** words) {
    try {
        write_bundle({words + 1, words + count});
    } catch (const std::exception& failure) {
        std::cerr << "write_turtle: " << failure.what() << '\n';
        return 1;
    }
}
