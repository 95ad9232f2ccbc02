// What the "Random" waveform draws; the other shapes stand in the golden renders.
#include "engine/modulator.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orvane::blocks::vesk {
namespace {

TEST(Modulator, RandomHoldsBetweenWrapsAndBlendsToItsOppositeAtHalfATurn) {
    EXPECT_NE(Modulator(48000.0f).random_state, Modulator(48000.0f).random_state) << "seeded apart";
    struct {
        float degrees;
        double likeness, tolerance;  // of right to left
    } const rows[] = {{0, 1, 1e-9}, {45, 0.5, 0.05}, {90, 0, 0.05}, {180, -1, 1e-9}};
    for (const auto& [degrees, likeness, tolerance] : rows) {
        SCOPED_TRACE(degrees);
        Modulator m(48000.0f);
        m.waveform = kv7::orv::vesk::waveform_mode::random;
        m.set_frequency(480.0f);
        m.set_phase_offset(degrees);
        m.smoothing_coefficient = 1.0f;  // the smoother lets all through
        m.reset();
        float last = m.random_value[0];
        int changes = 0;
        double product = 0.0, power = 0.0;
        for (int n = 0; n < 480000; ++n) {
            const Pair value = m.process(Pair{});
            changes += value[0] != last;
            ASSERT_GT(changes, 0) << "no draw at the first sample after a reset";
            last = value[0];
            ASSERT_LE(std::abs(value[0]), 1.0f);
            product += static_cast<double>(value[0] * value[1]);
            power += static_cast<double>(value[0] * value[0]);
        }
        EXPECT_NEAR(changes, 4800, 48) << "one draw a period";
        EXPECT_NEAR(power / 480000, 1.0 / 3, 0.02) << "uniform from -1 to 1";
        EXPECT_NEAR(product / power, likeness, tolerance);
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
