// Writes the texts of the bundle: what hosts read of the plugin before they load it.
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "preset_file.h"

namespace kv7::orv::lv2 {

// Manifest: what is in the bundle. binary is the plugin's file name.
void write_manifest(std::ostream& out, const std::string& binary, std::span<const preset> presets);

// The plugin: its ports with their names, ranges and units. version is major.minor.
void write_plugin(std::ostream& out, int major_version, int minor_version);

void write_presets(std::ostream& out, std::span<const preset> presets);

}  // namespace kv7::orv::lv2
