// Blocks of any length give the bits of their frames, also at rates where stages are shorter.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "scenario.h"

namespace scenario {
namespace {

Scenario of_text(const std::string& text) {
    std::istringstream stream(text);
    return read_scenarios(stream, "").front();
}

// At these rates a delay of a few samples, the plate's parts and its interpolators are shorter than
// a block, and all rings go round several times.
TEST(Blocks, GiveTheBitsOfSingleFramesWhereStagesAreShorterThanThey) {
    const char* const depths[] = {"0.3", "3", "12", "60"};  // octaves
    for (const int rate : {40, 130, 500, 1000, 2000})
        for (int i = 0; i < 12; ++i) {
            const std::string n = std::to_string(i);
            const Scenario s = of_text(
                "rate " + std::to_string(rate) + "\nframes " + std::to_string(20 * rate) +
                "\ninput noise 7 0.5\nseed 1 2\nat 0 set repitch " + std::to_string(i % 2) +
                "\nat 0 set reverb 0.4\nat 0 set reverb_location " + std::to_string(i % 3) +
                "\nat 0 set delay " + std::to_string((i + 1.5) / rate) +
                (i % 5 == 0 ? " 0.5" : " 0.06") + "\nat 0 set mod_delay " + depths[i % 4] +
                "\nat 0 set wobble 0.2" + "\nat 0 set noise 0.1\nat 0 set mod_waveform " +
                std::to_string(i % 6) + "\nat 0 set mod_freq " + std::to_string(rate / 5) +
                "\nat 0 set gate 1" +
                "\nat 0 set gate_threshold -20\nat 0 set duck 1\nat 0 set duck_threshold -30\n");
            const std::vector<double> frames = play(s);
            for (const std::size_t block : {3, 17, 32, 50})
                ASSERT_EQ(play(s, block), frames)
                    << rate << " Hz, " << i << ", blocks of " << block;
        }
}

}  // namespace
}  // namespace scenario
