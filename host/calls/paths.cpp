// Files and folders of the real file system, by the host's numbers and names.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "host/state.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t type_folder = 0x666F6C64;  // the four characters fold
constexpr std::uint32_t type_object = 0x746B7836;  // tkx6
constexpr const char* object_suffix = ".tkx64";
constexpr std::size_t longest_name = 2048;

void copy_out(const std::string& text, char* name) {
    name[text.copy(name, longest_name)] = '\0';
}

std::string slashes(const fs::path& path) {
    return path.generic_string();
}

// A folder's number; the same for the same folder.
std::int16_t number_of(const fs::path& folder) {
    auto& folders = tesk::state().folders;
    const std::string text = slashes(folder);
    const auto found = std::find(folders.begin(), folders.end(), text);
    if (found != folders.end()) return static_cast<std::int16_t>(found - folders.begin() + 1);
    folders.push_back(text);
    return static_cast<std::int16_t>(folders.size());
}

bool folder_of(std::int16_t number, fs::path& folder) {
    const auto& folders = tesk::state().folders;
    if (number < 1 || static_cast<std::size_t>(number) > folders.size()) return false;
    folder = folders[static_cast<std::size_t>(number) - 1];
    return true;
}

std::uint32_t type_of(const fs::path& file) {
    std::error_code failed;
    if (fs::is_directory(file, failed)) return type_folder;
    return file.extension() == object_suffix ? type_object : 0;
}

bool is_wanted(const fs::path& file, const std::uint32_t* types, std::int16_t count) {
    std::error_code failed;
    if (!fs::exists(file, failed)) return false;
    return types == nullptr || std::find(types, types + count, type_of(file)) != types + count;
}

bool located(const std::string& name, const std::uint32_t* types, std::int16_t count,
             fs::path& file) {
    const bool is_path = name.find('/') != std::string::npos;
    std::vector<fs::path> tried;
    if (is_path) tried.emplace_back(name);
    for (const std::string& folder : tesk::state().search_folders)
        if (!is_path) tried.push_back(fs::path(folder) / name);
    for (const fs::path& candidate : tried)
        for (const fs::path& written : {candidate, fs::path(slashes(candidate) + object_suffix)})
            if (is_wanted(written, types, count)) {
                file = fs::absolute(written);
                return true;
            }
    return false;
}

// Nanoseconds, so that a page written right after its object file is not older.
std::int16_t date_of(const fs::path& file, std::uint64_t* date) {
    std::error_code failed;
    const fs::file_time_type time = fs::last_write_time(file, failed);
    *date = 0;
    if (failed) return 1;
    const auto since =
        std::chrono::duration_cast<std::chrono::nanoseconds>(time - fs::file_time_type::min());
    *date = static_cast<std::uint64_t>(since.count());
    return 0;
}

}  // namespace

extern "C" {

int16_t locatefile_extended(char* name, int16_t* path, uint32_t* type, const uint32_t* types,
                            int16_t type_count) {
    fs::path file;
    *path = 0;
    if (*name == '\0' || !located(name, types, type_count, file)) return 1;
    *path = number_of(file.parent_path());
    *type = type_of(file);
    copy_out(slashes(file.filename()), name);
    return 0;
}

int16_t typelist_make(uint32_t* types, int16_t capacity, int16_t kind) {
    if (capacity < 1 || kind != 2) return 0;
    types[0] = type_object;
    return 1;
}

int16_t path_getpath(int16_t path, const char* name, int16_t* folder) {
    fs::path from;
    if (!folder_of(path, from)) return 1;
    *folder = *name == '\0' ? path : number_of(from / name);
    return 0;
}

int16_t path_nameconform(const char* name, char* conformed, int32_t, int32_t) {
    std::string text = name;
    std::replace(text.begin(), text.end(), '\\', '/');
    copy_out(text, conformed);
    return 0;
}

int16_t path_frompathname(const char* name, int16_t* path, char* file_name) {
    const fs::path file = fs::absolute(name);
    std::error_code failed;
    if (!fs::exists(file, failed)) return 1;
    const bool is_folder = fs::is_directory(file, failed);
    *path = number_of(is_folder ? file : file.parent_path());
    copy_out(is_folder ? "" : slashes(file.filename()), file_name);
    return 0;
}

int16_t path_createfolder(int16_t path, const char* name, int16_t* folder) {
    fs::path parent;
    std::error_code failed;
    if (!folder_of(path, parent) || !fs::create_directory(parent / name, failed)) return 1;
    *folder = number_of(parent / name);
    return 0;
}

// Number 0 is no folder; its text can't be opened, nor be taken for the root.
int16_t path_toabsolutesystempath(int16_t path, const char* name, char* absolute) {
    fs::path folder;
    const bool known = folder_of(path, folder);
    if (!known) folder = "(no folder)";
    copy_out(*name == '\0' ? slashes(folder) : slashes(folder / name), absolute);
    return known ? 0 : 1;
}

int16_t path_getmoddate(int16_t path, uint64_t* date) {
    fs::path folder;
    *date = 0;
    return folder_of(path, folder) ? date_of(folder, date) : int16_t{1};
}

int16_t path_getfilemoddate(const char* name, int16_t path, uint64_t* date) {
    fs::path folder;
    *date = 0;
    return folder_of(path, folder) ? date_of(folder / name, date) : int16_t{1};
}

}  // extern "C"
