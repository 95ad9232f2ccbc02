#include "framework/text.h"

#include <cstddef>
#include <exception>
#include <locale>
#include <ostream>

#include "framework/host_interface.h"

namespace kv7::ply {

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> split_list(const std::string& commas) {
    std::vector<std::string> items;
    if (trimmed(commas).empty()) return items;
    std::size_t begin = 0;
    for (std::size_t comma; (comma = commas.find(',', begin)) != std::string::npos;
         begin = comma + 1)
        items.push_back(trimmed(commas.substr(begin, comma - begin)));
    items.push_back(trimmed(commas.substr(begin)));
    return items;
}

std::ostringstream classic_text() {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    return text;
}

void print_line(std::ostream& stream, const std::string& text) noexcept {
    try {
        stream << text << std::endl;
    } catch (const std::exception&) {
        object_error(nullptr, "%s", text.c_str());
    }
}

}  // namespace kv7::ply
