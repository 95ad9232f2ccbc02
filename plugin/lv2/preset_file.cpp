#include "preset_file.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "tools/preset_text.h"

namespace kv7::orv::lv2 {
namespace {

program::value_attribute value_attribute_of(const attribute_row& row) {
    program::value_attribute made{
        .name = row.info.name, .low = row.low, .high = row.high, .unit = row.unit};
    switch (row.kind) {
        case attribute_kind::continuous:
            break;
        case attribute_kind::toggle:
            made.kind = program::value_kind::toggle;
            made.high = 1.0;
            break;
        case attribute_kind::choice:
            made.kind = program::value_kind::choice;
            made.value_names.assign(row.value_names.begin(), row.value_names.end());
            break;
        case attribute_kind::list:
            made.max_values = list_length;
            break;
    }
    return made;
}

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
    std::vector<program::value_attribute> attributes;
    for (const attribute_row& row : attribute_table) attributes.push_back(value_attribute_of(row));
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
