#include "tools/package.h"

#include <string>
#include <system_error>

namespace program {

namespace fs = std::filesystem;

fs::path package_folder() {
    std::error_code failed;
    const fs::path program_folder = fs::read_symlink("/proc/self/exe", failed).parent_path();
    const fs::path built = program_folder.parent_path() / "package";
    const fs::path installed = program_folder.parent_path() / "lib" / "vesk" / "package";
    return !fs::is_directory(built, failed) && fs::is_directory(installed, failed) ? installed
                                                                                   : built;
}

fs::path default_object() {
    return package_folder() / "externals" / "orv.device.vesk~.tkx64";
}

fs::path presets_folder() {
    return package_folder() / "presets";
}

fs::path reference_page(const fs::path& object, const std::string& class_name) {
    std::error_code failed;
    const fs::path file = fs::weakly_canonical(object, failed);
    return file.parent_path().parent_path() / "docs" / (class_name + ".teskref.xml");
}

}  // namespace program
