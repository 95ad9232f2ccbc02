// A file or folder found through the host, and the way its failures are reported.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace kv7::ply {

enum class path_kind : std::int32_t { any_file = 0, folder = 1, object_file = 2 };

struct host_path {
    static constexpr std::size_t longest_name = 2048;  // characters

    std::int16_t path = 0;  // the host's number of the folder; 0 when nothing was found
    std::array<char, longest_name + 1> file_name{};  // the host may rewrite it
    std::uint32_t file_type = 0;                     // four characters, answered by the host
    bool is_folder = false;

    host_path() = default;
    host_path(const std::string& name, path_kind kind, bool create);  // create: folders only

private:
    void create_folder(const std::string& name);
};

std::uint64_t date_modified(const host_path& of);  // comparable with less-than; 0 when unknown
std::string absolute_path(const host_path& of);    // as the system has it

// Before registration ends a line on the standard error stream, afterwards a runtime error.
void refpage_error(const char* text);

}  // namespace kv7::ply
