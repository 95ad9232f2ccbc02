#include "framework/host_path.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "framework/class_registration.h"
#include "framework/host_interface.h"
#include "framework/text.h"

namespace kv7::ply {

namespace {

constexpr std::uint32_t type_folder = 0x666F6C64;  // the four characters fold
constexpr std::int16_t most_types = 32;

}  // namespace

void refpage_error(const char* text) {
    if (setup_finished()) throw std::runtime_error(text);
    print_line(std::cerr, text);
}

host_path::host_path(const std::string& name, path_kind kind, bool create)
    : is_folder(kind == path_kind::folder) {
    name.copy(file_name.data(), longest_name);
    std::array<std::uint32_t, most_types> types{};
    std::int16_t count = 0;
    if (kind == path_kind::folder) types[static_cast<std::size_t>(count++)] = type_folder;
    if (kind == path_kind::object_file)
        count = std::clamp(typelist_make(types.data(), most_types, static_cast<std::int16_t>(kind)),
                           std::int16_t{0}, most_types);
    const std::int16_t error = locatefile_extended(file_name.data(), &path, &file_type,
                                                   count == 0 ? nullptr : types.data(), count);
    if (error == 0)
        is_folder = is_folder || file_type == type_folder;
    else if (!create)
        refpage_error("file not found");
    else if (kind != path_kind::folder)
        refpage_error("can only create folders, not files");
    else
        create_folder(name);
    if (!is_folder) return;
    std::int16_t folder = 0;
    path = path_getpath(path, file_name.data(), &folder) == 0 ? folder : std::int16_t{0};
}

void host_path::create_folder(const std::string& name) {
    std::array<char, longest_name + 1> buffer{};
    path_nameconform(name.c_str(), buffer.data(), 0, 1);
    const std::string conformed = buffer.data();
    const std::size_t slash = conformed.rfind('/');
    if (slash == std::string::npos) {
        refpage_error("no folder name provided");
    } else {
        std::int16_t parent = 0;
        std::array<char, longest_name + 1> scratch{};
        std::int16_t error =
            path_frompathname(conformed.substr(0, slash).c_str(), &parent, scratch.data());
        if (error == 0)
            error = path_createfolder(parent, conformed.substr(slash + 1).c_str(), &path);
        if (error != 0) refpage_error("error trying to create folder");
    }
    file_name[0] = '\0';
}

std::uint64_t date_modified(const host_path& of) {
    std::uint64_t date = 0;
    const std::int16_t error = of.is_folder
                                   ? path_getmoddate(of.path, &date)
                                   : path_getfilemoddate(of.file_name.data(), of.path, &date);
    if (error != 0 || date == 0) refpage_error("failed to get date modified");
    return date;
}

std::string absolute_path(const host_path& of) {
    std::array<char, host_path::longest_name + 1> absolute{};
    // A folder's number identifies the folder itself, so its name is not appended.
    path_toabsolutesystempath(of.path, of.is_folder ? "" : of.file_name.data(), absolute.data());
    return absolute.data();
}

}  // namespace kv7::ply
