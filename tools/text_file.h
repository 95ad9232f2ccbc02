// Reads a text file in UTF-8 line by line; errors name file and line.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace program {

// file: "-" is the standard input. Calls take with every line, without its line end and without a
// byte order mark. A bad_text thrown there becomes a usage_error that begins with file and line
// number; so does text that is not UTF-8 or has control characters. Throws failure when the file
// can't be read.
void for_each_line(const std::string& file, const std::function<void(std::string_view)>& take);

}  // namespace program
