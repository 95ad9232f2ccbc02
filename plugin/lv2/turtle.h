// Writes the bundle's Turtle files, which hosts read before they load the plugin.
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "preset_file.h"

namespace kv7::orv::lv2 {

// The manifest lists the plugin and its presets. binary is the plugin's file name.
void write_manifest(std::ostream& out, const std::string& binary, std::span<const preset> presets);

struct version {
    int major;
    int minor;
    int patch;
};

// The plugin's description: its ports with names, ranges and units. A bundle has two numbers, which
// LV2 wants even in a release.
void write_plugin(std::ostream& out, const version& of_project);

void write_presets(std::ostream& out, std::span<const preset> presets);

}  // namespace kv7::orv::lv2
