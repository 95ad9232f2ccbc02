// The paths of the package: the object and the files that belong to it.
#pragma once

#include <filesystem>

namespace program {

// From the folder of the program file: `../package` in a build, `../lib/vesk/package` when
// installed; the former when neither exists.
std::filesystem::path package_folder();

std::filesystem::path default_object();  // the effect in the package
std::filesystem::path presets_folder();  // in the package

// The reference page that an object of this file and class writes when it is loaded.
std::filesystem::path reference_page(const std::filesystem::path& object,
                                     const std::string& class_name);

}  // namespace program
