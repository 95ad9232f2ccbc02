// The golden renders: every scenario in this folder must come out equal to the bit, those with a
// file of samples sample by sample, the many of generated.txt by their hash.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/kernels.h"
#include "scenario.h"

namespace scenario {
namespace {

constexpr const char* generated = "generated";

std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(GOLDEN_FOLDER))
        if (entry.path().extension() == ".txt" && entry.path().stem() != generated)
            found.push_back(entry.path().stem().string());
    return found;
}

std::string path(const std::string& name) {
    return std::string(GOLDEN_FOLDER "/") + name;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, EqualsItsRenderToTheBit) {
    Scenario s = read_scenarios(path(GetParam()) + ".txt").front();
    s.on_device = GetParam().starts_with("device");
    const std::vector<double> played = play(s);
    const std::vector<float> golden = read_floats(path(GetParam()) + ".f32");
    ASSERT_EQ(played.size(), golden.size());
    for (std::size_t i = 0; i < golden.size(); ++i)
        ASSERT_EQ(played[i], golden[i]) << "frame " << i / 2 << (i % 2 == 0 ? " left" : " right");
}

INSTANTIATE_TEST_SUITE_P(Renders, Golden, testing::ValuesIn(names()), [](const auto& row) {
    std::string name = row.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

constexpr std::size_t shares = 8;  // for as many processors and for patience under a sanitizer

class Generated : public testing::TestWithParam<std::size_t> {};

// On every kernel; engines frame by frame and in blocks of one length, which differs from one
// scenario to the next and is cut at every event.
TEST_P(Generated, HaveTheirHashesOnEveryKernelAndInBlocks) {
    using namespace orvane::blocks::vesk;
    const std::vector<Scenario> all = read_scenarios(path(generated) + ".txt");
    const Kernel chosen = kernel_in_use();
    for (const Kernel* kernel : usable_kernels()) {
        use_kernel(*kernel);
        for (std::size_t i = GetParam(); i < all.size(); i += shares)
            for (const std::size_t block : {std::size_t{0}, 1 + i % 70}) {
                if (all[i].on_device && block != 0) continue;
                EXPECT_EQ(hash_of(play(all[i], block)), all[i].hash)
                    << generated << ".txt:" << all[i].line << ", " << kernel->name << ", blocks of "
                    << block;
            }
    }
    use_kernel(chosen);
}

INSTANTIATE_TEST_SUITE_P(Share, Generated, testing::Range(std::size_t{0}, shares));

}  // namespace
}  // namespace scenario
