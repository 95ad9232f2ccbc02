// A folder of its own for each test, in which the program runs on files made
// there.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sndfile.hh>
#include <stdexcept>
#include <string>
#include <vector>

struct outcome {
    int exit;
    std::string out;
    std::string err;  // without the line that the plain object prints while it loads
};

struct sound {
    int rate = 8000;
    int channels = 2;
    std::vector<float> samples;  // interleaved
    int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
};

class sandbox : public testing::Test {
protected:
    sandbox() {
        std::string parent = testing::TempDir() + "vesk-test-XXXXXX";
        if (mkdtemp(parent.data()) == nullptr) throw std::runtime_error("no folder for the test");
        folder = parent + "/in";
        std::filesystem::create_directory(folder);
        std::filesystem::create_directory_symlink(TEST_OBJECTS, folder / "objects");
        // The library that finds fonts keeps a few bytes until the program ends.
        write_text("../leaks", "leak:libfontconfig\n");
        const std::string leaks = "print_suppressions=0:suppressions=" + parent + "/leaks";
        setenv("LSAN_OPTIONS", leaks.c_str(), 1);
    }
    ~sandbox() override {
        std::error_code left_over;
        std::filesystem::remove_all(folder.parent_path(), left_over);
    }

    // words: what a shell reads after the name of the program; before: ahead of
    // it, as `cat file |`.
    outcome vesk(const std::string& words, const std::string& before = "") const {
        const std::string line = "cd '" + folder.string() + "' && " + before +
                                 " '" VESK_PROGRAM "' " + words + " >../out 2>../err";
        const int status = std::system(line.c_str());
        outcome ended{WIFEXITED(status) ? WEXITSTATUS(status) : -1, bytes("../out"),
                      bytes("../err")};
        const std::string printed = "a line that an object prints while it loads\n";
        if (const std::size_t at = ended.err.find(printed); at != std::string::npos)
            ended.err.erase(at, printed.size());
        return ended;
    }
    // render ... through the plain object.
    outcome play(const std::string& words, const std::string& before = "") const {
        return vesk("render --object objects/plain~.tkx64 " + words, before);
    }
    // What in.wav becomes.
    sound hear(const std::string& words) const {
        const outcome ended = play("in.wav o.wav --force " + words);
        EXPECT_EQ(ended.exit, 0) << ended.err;
        return read("o.wav");
    }

    void write(const std::string& name, const sound& what) const {
        SndfileHandle file(folder / name, SFM_WRITE, what.format, what.channels, what.rate);
        const auto count = static_cast<sf_count_t>(what.samples.size());
        EXPECT_EQ(file.write(what.samples.data(), count), count) << file.strError();
    }
    sound read(const std::string& name) const {
        SndfileHandle file(folder / name);
        EXPECT_EQ(file.error(), 0) << name << ": " << file.strError();
        sound result{file.samplerate(), file.channels(), {}, file.format()};
        result.samples.resize(static_cast<std::size_t>(file.frames() * file.channels()));
        file.read(result.samples.data(), static_cast<sf_count_t>(result.samples.size()));
        return result;
    }
    void write_text(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    std::string bytes(const std::string& name) const {
        std::ifstream stream(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::filesystem::path folder;
};
