// The test objects, each copied into a package of its own where the host loads it.
#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "host/host.h"

using lines = std::vector<std::string>;

// A folder that goes with the test; all but a loaded object, where the system holds on to its file.
struct package {
    std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                   ("package" + std::to_string(std::random_device()()));

    package() { std::filesystem::create_directories(folder / "externals"); }
    ~package() {
        std::error_code held;
        std::filesystem::remove_all(folder, held);
    }
    package(const package&) = delete;
    package& operator=(const package&) = delete;

    std::string with(const std::filesystem::path& object, const std::string& name = {}) const {
        const auto to = folder / "externals" / (name.empty() ? object.filename().string() : name);
        std::filesystem::copy_file(object, to);
        return to.string();
    }
    std::filesystem::path page(const std::string& name) const {
        return folder / "docs" / (name + ".teskref.xml");
    }
};

inline std::string contents(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

// An instance of the class with everything, and what it said meanwhile.
struct example_box {
    package folder;
    tesk::host& host = tesk::host::the();
    std::unique_ptr<tesk::instance> box;
    lines born;  // what it said while it was made

    explicit example_box(const std::string& text = "example~") {
        host.load(folder.with(EXAMPLE_OBJECT));
        host.take_errors();
        box = host.make(text);
        born = said();
    }
    // Lines of the error channel without the name in front.
    lines said() const {
        lines all = host.take_errors();
        for (std::string& line : all)
            if (line.rfind("example~: ", 0) == 0) line.erase(0, 10);
        return all;
    }
};
