// Checks the path of a file to be written before the work begins.
#pragma once

#include <string>

namespace program {

// path: "-", the standard output, passes. input: a path that must not be overwritten. Throws
// usage_error when path is the input, failure when no file can be written there, or when there is
// one and replace is false.
void check_output_path(const std::string& path, const std::string& input, bool replace);

std::string partial_path(const std::string& path);  // of/out.wav: of/out.partial.wav

}  // namespace program
