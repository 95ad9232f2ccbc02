// Reads small text files of ours line by line, and names the line that is wrong.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace program {

// Calls take with every line, without its end; a bad_text thrown there becomes a failure that
// begins with file and line number. Throws failure when the file can't be read.
void for_each_line(const std::string& file, const std::function<void(std::string_view)>& take);

}  // namespace program
