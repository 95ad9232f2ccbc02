#include "tools/output_path.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/failure.h"

namespace program {

namespace fs = std::filesystem;

void check_output_path(const std::string& path, const std::string& input, bool replace) {
    if (path == "-") return;
    std::error_code failed;
    const fs::path parent = fs::path(path).parent_path();
    if (access(parent.empty() ? "." : parent.c_str(), W_OK | X_OK) != 0)
        throw failure(path + ": can't be written: " + std::strerror(errno));
    const fs::file_status status = fs::status(path, failed);
    if (!fs::exists(status)) return;
    if (fs::is_directory(status)) throw failure(path + ": is a folder, expected a file to write");
    if (!fs::is_regular_file(status))
        throw failure(path + ": is no ordinary file, expected a file to write");
    if (input != "-" && fs::equivalent(input, path, failed))
        throw usage_error(path + ": is INPUT too, expected another file");
    if (!replace) throw failure(path + ": is there already, expected --force");
}

std::string partial_path(const std::string& path) {
    if (path == "-") return path;
    const fs::path whole(path);
    return (whole.parent_path() / (whole.stem().string() + ".partial" + whole.extension().string()))
        .string();
}

}  // namespace program
