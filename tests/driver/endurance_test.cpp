// Ten minutes of audio with everything moved at random: every output stays finite.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "any_value.h"
#include "vesk_driver.h"

namespace kv7::orv {
namespace {

TEST(Endurance, TenMinutesOfEverythingMovedStayFinite) {
    Dice dice(11);
    constexpr int frames = 256;
    std::vector<double> left(frames), right(frames);
    double* const channels[2] = {left.data(), right.data()};
    const signal_bundle bundle{channels, 2, frames};
    double loudest = 0.0;
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        vesk_driver driver(rate);
        driver.prepare(rate);
        for (double t = 0.0; t < 200.0; t += frames / rate) {
            if (dice.below(3) == 0) {
                const attribute_row& row = any_attribute(dice);
                driver.set(attribute_index(row.info.name),
                           std::vector{any_value(dice, row), any_value(dice, row)});
            }
            if (dice.below(5000) == 0) driver.core.request_clear();
            if (dice.below(5000) == 0) driver.core.request_reset();
            const double level = dice.below(8) == 0 ? 0.0 : dice.unit();
            for (auto* channel : {&left, &right})
                for (double& x : *channel) x = dice.swing() * level;
            driver.core.perform(bundle, bundle);
            for (const auto* channel : {&left, &right})
                for (const double x : *channel) {
                    ASSERT_TRUE(std::isfinite(x)) << "at " << t << " s, " << rate << " Hz";
                    loudest = std::max(loudest, std::abs(x));
                }
        }
    }
    EXPECT_GT(loudest, 1.0) << "something was played";
}

}  // namespace
}  // namespace kv7::orv
