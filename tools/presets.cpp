#include "tools/presets.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tools/class_attributes.h"
#include "tools/failure.h"
#include "tools/package.h"

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
        throw usage_error("--preset " + name_or_file + ": " +
                          unknown_name("preset", name_or_file, names, "vesk presets"));
    return file_of_name(name_or_file);
}

}  // namespace

std::vector<listed_preset> list_presets() {
    std::vector<listed_preset> presets;
    for (const std::string& name : preset_names())
        presets.push_back({name, read_preset_title(file_of_name(name).string())});
    return presets;
}

preset_title title_of_preset(const std::string& name_or_file) {
    return read_preset_title(file_of(name_or_file).string());
}

std::vector<message> read_preset(const tesk::class_info& of_class, const std::string& name_or_file,
                                 const value_rules& rules) {
    std::vector<value_attribute> attributes;
    for (const tesk::attribute_info& attribute : of_class.attributes)
        attributes.push_back(value_attribute_of(attribute));
    value_rules named = rules;
    const std::string file = file_of(name_or_file).string();
    if (rules.clamp_warning)
        named.clamp_warning = [&](const std::string& line) {
            rules.clamp_warning(file + ": " + line);
        };
    preset_text preset = read_preset_text(file, attributes, named);
    std::stable_partition(
        preset.settings.begin(), preset.settings.end(),
        [&](const preset_setting& s) { return attributes[s.attribute].max_values > 1; });
    std::vector<message> settings;
    for (const preset_setting& setting : preset.settings) {
        const value_attribute& attribute = attributes[setting.attribute];
        settings.push_back({attribute.name, atoms_of(setting.values, attribute.kind)});
    }
    return settings;
}

}  // namespace program
