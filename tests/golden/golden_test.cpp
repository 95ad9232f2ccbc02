// The golden renders: every scenario beside this file must come out equal to the bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "scenario.h"

namespace scenario {
namespace {

std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(GOLDEN_FOLDER))
        if (entry.path().extension() == ".txt") found.push_back(entry.path().stem().string());
    return found;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, EqualsItsRenderToTheBit) {
    const std::string path = std::string(GOLDEN_FOLDER "/") + GetParam();
    const Scenario s = read_scenario(path + ".txt");
    std::vector<double> played;
    if (GetParam().starts_with("device"))
        played = play_device(s);
    else
        for (const float x : play_engine(s)) played.push_back(x);
    const std::vector<float> golden = read_floats(path + ".f32");
    ASSERT_EQ(played.size(), golden.size());
    for (std::size_t i = 0; i < golden.size(); ++i)
        ASSERT_EQ(played[i], golden[i]) << "frame " << i / 2 << (i % 2 == 0 ? " left" : " right");
}

INSTANTIATE_TEST_SUITE_P(Renders, Golden, testing::ValuesIn(names()), [](const auto& row) {
    std::string name = row.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

}  // namespace
}  // namespace scenario
