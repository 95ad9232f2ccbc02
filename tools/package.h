// Where the object and what belongs to it lie, as seen from the program file.
#pragma once

#include <filesystem>

namespace program {

// The package folder beside the program's, `../package` where it was built and
// `../share/vesk/package` where it was installed; the first of them when neither is there.
std::filesystem::path package_folder();

std::filesystem::path usual_object();    // the effect in the package
std::filesystem::path presets_folder();  // in the package

// The reference page that the object of this file and class wrote when it was loaded.
std::filesystem::path reference_page(const std::filesystem::path& object,
                                     const std::string& class_name);

}  // namespace program
