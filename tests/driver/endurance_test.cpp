// Ten minutes of audio with everything moved at random: every output stays finite.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dice.h"
#include "vesk_driver.h"

namespace kv7::orv {
namespace {

// Any attribute to a random value of its range, often to an end of it.
void set_at_random(Dice& dice, vesk_driver& driver) {
    const auto index = static_cast<std::size_t>(dice.below(static_cast<int>(attribute_count)));
    const attribute_row& row = attribute_table[index];
    // Toggles and choices take the whole part.
    const double high = row.kind == attribute_kind::toggle ? 2.0 : row.high;
    const auto value = [&] {
        return row.low + (high - row.low) * std::clamp(2.0 * dice.unit() - 0.5, 0.0, 1.0);
    };
    const double values[2] = {value(), value()};
    driver.set(index, values);
}

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
            if (dice.below(3) == 0) set_at_random(dice, driver);
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
