// Writes the bundle's Turtle files, which hosts read before they load the plugin.
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "preset_file.h"

namespace kv7::orv::lv2 {

// The manifest lists the plugin and its presets. binary is the plugin's file name.
void write_manifest(std::ostream& out, const std::string& binary, std::span<const preset> presets);

// The plugin's description: its ports with names, ranges and units. version is major.minor.
void write_plugin(std::ostream& out, int major_version, int minor_version);

void write_presets(std::ostream& out, std::span<const preset> presets);

}  // namespace kv7::orv::lv2
