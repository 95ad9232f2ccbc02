#include "tools/text_file.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

void check_characters(std::string_view line) {
    const auto is_control = [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; };
    const auto found = std::find_if(line.begin(), line.end(), is_control);
    if (found != line.end())
        throw bad_text("control character " + std::to_string(int{*found}) +
                       ", expected plain text");
    if (!is_utf8(line)) throw bad_text("is not UTF-8 text");
}

}  // namespace

void for_each_line(const std::string& file, const std::function<void(std::string_view)>& take) {
    std::error_code unknown;
    const bool is_stream = file == "-";
    const std::string shown = is_stream ? "standard input" : file;
    if (!is_stream && std::filesystem::is_directory(file, unknown))
        throw failure(file + ": is a folder, expected a text file");
    std::ifstream opened;
    if (!is_stream) opened.open(file);
    if (!is_stream && !opened) throw failure(file + ": can't be read: " + std::strerror(errno));
    std::istream& lines = is_stream ? std::cin : opened;
    std::size_t number = 0;
    for (std::string read; std::getline(lines, read);) {
        std::string_view line = read;
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
        if (++number == 1 && line.starts_with(byte_order_mark))
            line.remove_prefix(byte_order_mark.size());
        if (line.ends_with('\r')) line.remove_suffix(1);
        try {
            check_characters(line);
            take(line);
        } catch (const bad_text& wrong) {
            throw usage_error(shown + ":" + std::to_string(number) + ": " + wrong.what());
        }
    }
    if (lines.bad())
        throw failure(shown + ": reading stopped after line " + std::to_string(number));
}

}  // namespace program
