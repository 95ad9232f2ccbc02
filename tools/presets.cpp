#include "tools/presets.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tools/failure.h"
#include "tools/package.h"
#include "tools/text.h"
#include "tools/text_file.h"

namespace program {

namespace {

namespace fs = std::filesystem;

constexpr const char* suffix = ".txt";

std::string title_of(const std::string& file) {
    std::string title;
    for_each_line(file, [&title, first = true](std::string_view line) mutable {
        if (first && !line.empty() && line.front() == '#') title = trimmed(line.substr(1));
        first = false;
    });
    return title;
}

fs::path file_of(const std::string& name_or_file) {
    fs::path given(name_or_file);
    if (name_or_file.find('/') != std::string::npos || given.extension() == suffix) return given;
    std::vector<std::string> names;
    for (const preset& known : list_presets()) names.push_back(known.name);
    if (std::find(names.begin(), names.end(), name_or_file) == names.end())
        throw usage_error("--preset " + name_or_file + ": no such preset, the nearest is " +
                          nearest_name(name_or_file, names));
    return presets_folder() / (name_or_file + suffix);
}

}  // namespace

std::vector<preset> list_presets() {
    std::vector<preset> presets;
    std::error_code failed;
    for (const fs::directory_entry& entry : fs::directory_iterator(presets_folder(), failed))
        if (entry.path().extension() == suffix)
            presets.push_back({entry.path().stem().string(), title_of(entry.path().string())});
    if (failed)
        throw failure(presets_folder().string() + ": no presets there: " + failed.message());
    std::sort(presets.begin(), presets.end(),
              [](const preset& a, const preset& b) { return a.name < b.name; });
    return presets;
}

std::vector<message> read_preset(const tesk::class_info& of_class,
                                 const std::string& name_or_file) {
    std::vector<message> settings;
    for_each_line(file_of(name_or_file).string(), [&](std::string_view line) {
        line = trimmed(line.substr(0, line.find('#')));
        if (line.empty()) return;
        const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
        add_setting(settings, read_setting(of_class, line.substr(0, end), line.substr(end)));
    });
    return settings;
}

}  // namespace program
