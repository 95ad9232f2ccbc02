// Reads a text file line by line; errors name file and line.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace program {

// Calls take with every line, without its newline; a bad_text thrown there becomes a failure that
// begins with file and line number. Throws failure when the file can't be read.
void for_each_line(const std::string& file, const std::function<void(std::string_view)>& take);

}  // namespace program
