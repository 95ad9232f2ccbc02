// A folder of its own for each test, in which the program runs on files made there.
#pragma once

#include <sndfile.h>

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

struct outcome {
    int exit = -1;
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
    sandbox();
    ~sandbox() override;

    // What a shell reads behind the name of the program. OBJECTS/ stands for the test objects,
    // VESK for the program.
    outcome vesk(const std::string& words, const std::string& before = "") const;
    // render ... through the plain object; before runs ahead of the program, e.g. `cat file |`.
    outcome play(const std::string& words, const std::string& before = "") const;

    void write(const std::string& name, const sound& what) const;
    sound read(const std::string& name) const;
    void write_text(const std::string& name, const std::string& text) const;
    std::string bytes(const std::string& name) const;
    std::vector<std::string> files() const;  // sorted

    std::filesystem::path folder;
};
