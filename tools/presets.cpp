#include "tools/presets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include "attribute_table.h"
#include "tools/failure.h"
#include "tools/package.h"
#include "tools/text.h"

namespace program {

namespace {

namespace fs = std::filesystem;

constexpr const char* suffix = ".txt";

std::vector<std::string> preset_names() {
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(presets_folder(), error))
        if (entry.path().extension() == suffix) names.push_back(entry.path().stem().string());
    if (error) throw failure(presets_folder().string() + ": no presets there: " + error.message());
    std::sort(names.begin(), names.end());
    return names;
}

fs::path file_of_name(const std::string& name) {
    return presets_folder() / (name + suffix);
}

fs::path file_of(const std::string& name_or_file) {
    fs::path given(name_or_file);
    if (name_or_file.find('/') != std::string::npos || given.extension() == suffix) return given;
    const std::vector<std::string> names = preset_names();
    if (std::find(names.begin(), names.end(), name_or_file) == names.end())
        throw usage_error("--preset " + name_or_file + ": no such preset, the nearest is " +
                          nearest_name(name_or_file, names));
    return file_of_name(name_or_file);
}

value_kind kind_of(const tesk::attribute_info& attribute) {
    const std::string style = attribute.property("style");
    if (style == "onoff") return value_kind::toggle;
    if (style == "enumindex") return value_kind::choice;
    if (attribute.type == "float64") return value_kind::number;
    return attribute.type == "long" ? value_kind::whole_number : value_kind::unsupported;
}

// What the host knows of the attribute. Its class has no limits for the elements of a list, so
// those come from the effect's table.
preset_attribute preset_attribute_of(const tesk::attribute_info& attribute) {
    preset_attribute made{.name = attribute.name, .kind = kind_of(attribute)};
    made.max_values = static_cast<std::size_t>(attribute.most);
    made.value_names = attribute.value_names();
    if (const double low = attribute.number("minimum"); !std::isnan(low)) made.low = low;
    if (const double high = attribute.number("maximum"); !std::isnan(high)) made.high = high;
    const std::size_t row = kv7::orv::attribute_index(attribute.name);
    if (made.max_values > 1 && row < kv7::orv::attribute_count) {
        made.low = kv7::orv::attribute_table[row].low;
        made.high = kv7::orv::attribute_table[row].high;
        made.max_values = kv7::orv::list_length;
    }
    return made;
}

tesk::atom_list atoms_of(const preset_setting& setting, value_kind kind) {
    tesk::atom_list atoms;
    for (const double value : setting.values)
        atoms.push_back(kind == value_kind::number
                            ? tesk::atom_of(value)
                            : tesk::atom_of(static_cast<std::int64_t>(value)));
    return atoms;
}

}  // namespace

std::vector<listed_preset> list_presets() {
    std::vector<listed_preset> presets;
    for (const std::string& name : preset_names())
        presets.push_back({name, read_preset_title(file_of_name(name).string())});
    return presets;
}

std::vector<message> read_preset(const tesk::class_info& of_class,
                                 const std::string& name_or_file) {
    std::vector<preset_attribute> attributes;
    for (const tesk::attribute_info& attribute : of_class.attributes)
        attributes.push_back(preset_attribute_of(attribute));
    preset_text preset = read_preset_text(file_of(name_or_file).string(), attributes);
    std::stable_partition(
        preset.settings.begin(), preset.settings.end(),
        [&](const preset_setting& s) { return attributes[s.attribute].max_values > 1; });
    std::vector<message> settings;
    for (const preset_setting& setting : preset.settings) {
        const preset_attribute& attribute = attributes[setting.attribute];
        settings.push_back({attribute.name, atoms_of(setting, attribute.kind)});
    }
    return settings;
}

}  // namespace program
