#include "preset_file.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "tools/preset_text.h"
#include "tools/table_attributes.h"

namespace kv7::orv::lv2 {
namespace {

// The name becomes part of a URI, where other characters would need an escape.
std::string name_of(const std::filesystem::path& file) {
    constexpr const char* allowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";
    std::string name = file.stem().string();
    if (name.find_first_not_of(allowed) != std::string::npos)
        throw std::runtime_error(file.string() +
                                 ": expected a file name of letters, digits, '-' and '_'");
    return name;
}

}  // namespace

preset read_preset(const std::filesystem::path& file) {
    const std::vector<program::value_attribute> attributes = program::attributes_of_table();
    const program::preset_text text = program::read_preset_text(file.string(), attributes);
    preset made{name_of(file), text.title.title, text.title.description, text.title.category, {}};
    for (std::size_t i = 0; i < attribute_count; ++i)
        made.values[i].fill(attribute_table[i].default_value);
    for (const program::preset_setting& setting : text.settings) {
        auto& values = made.values[setting.attribute];
        values.fill(setting.values[0]);  // one delay time is for both sides
        std::copy(setting.values.begin(), setting.values.end(), values.begin());
    }
    return made;
}

}  // namespace kv7::orv::lv2
