#include "tools/text_file.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tools/failure.h"

namespace program {

void for_each_line(const std::string& file, const std::function<void(std::string_view)>& take) {
    std::error_code unknown;
    if (std::filesystem::is_directory(file, unknown))
        throw failure(file + ": is a folder, expected a text file");
    std::ifstream lines(file);
    if (!lines) throw failure(file + ": can't be read: " + std::strerror(errno));
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            take(line);
        } catch (const bad_text& wrong) {
            throw failure(file + ":" + std::to_string(number) + ": " + wrong.what());
        }
    }
    if (lines.bad()) throw failure(file + ": reading stopped after line " + std::to_string(number));
}

}  // namespace program
