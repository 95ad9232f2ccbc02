#include "sandbox.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

std::string contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void replace_all(std::string& text, const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
}

}  // namespace

sandbox::sandbox() {
    std::string pattern = (fs::temp_directory_path() / "vesk-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for the test");
    folder = pattern;
    fs::create_directory(folder / "in");
    // The library that finds fonts keeps a few bytes until the program ends.
    std::ofstream(folder / "leaks") << "leak:libfontconfig\n";
}

sandbox::~sandbox() {
    std::error_code left_over;
    fs::remove_all(folder, left_over);
}

outcome sandbox::vesk(const std::string& words, const std::string& before) const {
    const fs::path out = folder / ".out";
    const fs::path err = folder / ".err";
    std::string line = "export LSAN_OPTIONS=print_suppressions=0:suppressions='" +
                       (folder / "leaks").string() + "'; cd '" + folder.string() + "/in' && " +
                       before + " VESK " + words + " >'" + out.string() + "' 2>'" + err.string() +
                       "'";
    replace_all(line, "VESK", VESK_PROGRAM);
    replace_all(line, "OBJECTS/", TEST_OBJECTS);
    const int status = std::system(line.c_str());
    outcome result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
    replace_all(result.err, "a line that an object prints while it loads\n", "");
    replace_all(result.err, TEST_OBJECTS, "OBJECTS/");
    return result;
}

outcome sandbox::play(const std::string& words, const std::string& before) const {
    return vesk("render --object OBJECTS/plain~.tkx64 " + words, before);
}

void sandbox::write(const std::string& name, const sound& what) const {
    SF_INFO info{};
    info.samplerate = what.rate;
    info.channels = what.channels;
    info.format = what.format;
    SNDFILE* const file = sf_open((folder / "in" / name).c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    sf_write_float(file, what.samples.data(), static_cast<sf_count_t>(what.samples.size()));
    sf_close(file);
}

sound sandbox::read(const std::string& name) const {
    SF_INFO info{};
    SNDFILE* const file = sf_open((folder / "in" / name).c_str(), SFM_READ, &info);
    if (file == nullptr) throw std::runtime_error(name + ": " + sf_strerror(nullptr));
    sound result{info.samplerate, info.channels, {}, info.format};
    result.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
    sf_read_float(file, result.samples.data(), static_cast<sf_count_t>(result.samples.size()));
    sf_close(file);
    return result;
}

void sandbox::write_text(const std::string& name, const std::string& text) const {
    std::ofstream(folder / "in" / name, std::ios::binary) << text;
}

std::string sandbox::bytes(const std::string& name) const {
    return contents(folder / "in" / name);
}

std::vector<std::string> sandbox::files() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder / "in"))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}
