#include "tools/render_list.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/text_file.h"

namespace program {

namespace {

namespace fs = std::filesystem;

// Of the files that a folder is searched for; case does not matter.
constexpr std::array sound_suffixes{".wav", ".flac", ".w64", ".rf64", ".aif", ".aiff",
                                    ".caf", ".ogg",  ".oga", ".opus", ".mp3", ".au"};

bool is_sound_file(const fs::path& path) {
    const std::string suffix = lower_case(path.extension().string());
    return std::find(sound_suffixes.begin(), sound_suffixes.end(), suffix) != sound_suffixes.end();
}

std::vector<std::string> split(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

list_entry entry_of(std::string_view line) {
    const std::vector<std::string> columns = split(line, "\t");
    if (columns.size() < 2 || columns[0].empty() || columns[1].empty())
        throw bad_text("expected INPUT, a tab and OUTPUT");
    for (const std::string& file : {columns[0], columns[1]})
        if (file == "-") throw bad_text("standard streams can't be in a list, expected files");
    list_entry entry{columns[0], columns[1], {}};
    for (std::size_t i = 2; i < columns.size(); ++i)
        for (const std::string& setting : split(columns[i], ";"))
            if (!trimmed(setting).empty()) entry.settings.emplace_back(trimmed(setting));
    return entry;
}

// The same for every way to write a path.
std::string identity_of(const std::string& path) {
    std::error_code failed;
    const fs::path canonical = fs::weakly_canonical(fs::absolute(path), failed);
    return failed ? path : canonical.string();
}

}  // namespace

std::vector<list_entry> read_list(const std::string& file) {
    std::vector<list_entry> entries;
    for_each_line(file, [&entries](std::string_view line) {
        if (!trimmed(line).empty()) entries.push_back(entry_of(line));
    });
    return entries;
}

std::vector<list_entry> list_folder(const std::string& input, const std::string& into) {
    std::error_code failed;
    if (!fs::is_directory(input, failed))
        return {{input, (fs::path(into) / fs::path(input).filename()).string(), {}}};
    const std::string own_output = identity_of(into);
    std::vector<list_entry> entries;
    fs::recursive_directory_iterator files(input, failed);
    for (; !failed && files != fs::recursive_directory_iterator(); files.increment(failed)) {
        const fs::path& path = files->path();
        if (files->is_directory() && identity_of(path.string()) == own_output)
            files.disable_recursion_pending();
        else if (files->is_regular_file() && is_sound_file(path))
            entries.push_back(
                {path.string(), (fs::path(into) / path.lexically_relative(input)).string(), {}});
    }
    if (failed) throw failure(input + ": can't be listed: " + failed.message());
    std::sort(entries.begin(), entries.end(),
              [](const list_entry& a, const list_entry& b) { return a.input < b.input; });
    return entries;
}

void check_outputs(const std::vector<list_entry>& entries) {
    std::set<std::string> inputs;
    std::set<std::string> outputs;
    for (const list_entry& entry : entries) inputs.insert(identity_of(entry.input));
    for (const list_entry& entry : entries) {
        const std::string output = identity_of(entry.output);
        if (inputs.contains(output))
            throw usage_error(entry.output +
                              ": is an input of the list too, expected another file");
        if (!outputs.insert(output).second)
            throw usage_error(entry.output + ": is written twice, expected another file for " +
                              entry.input);
    }
}

}  // namespace program
