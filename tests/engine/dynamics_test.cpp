// Gate and ducker: thresholds, hysteresis, times and static curves, heard from outside.
#include "engine/dynamics.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orvane::blocks::vesk {
namespace {

constexpr float rate = 48000.0f;

int samples(double seconds) {
    return static_cast<int>(seconds * static_cast<double>(rate));
}

TEST(Gate, OpensOnlyOverItsThreshold) {
    Gate gate(rate);
    gate.set_gate_threshold(0.0f);  // open over 1, close at 0.5
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(gate.step_gate(Pair{1.0f, -1.0f}), 0.0f);
    gate.step_gate(Pair{0.0f, -1.0001f});
    EXPECT_TRUE(gate.gate_open) << "the louder side counts";
    EXPECT_GT(gate.gate_gain, 0.0f) << "the gain just computed is the one in use";
}

// Times are met to a few in a thousand: the coefficient of a long one is coarse.
TEST(Gate, StaysOpenUntilTheHeldLevelFallsToHalfAndThenFades) {
    Gate gate(rate);
    gate.set_gate_threshold(-12.0f);
    gate.set_gate_release(0.2f);
    const double open = std::pow(10.0, -12.0 / 20.0);
    for (int i = 0; i < samples(0.02); ++i) gate.step_gate(both(0.8f));
    EXPECT_NEAR(gate.gate_gain, 1.0f, 1e-5f);
    int held = 0;
    while (gate.step_gate(Pair{}) > 0.99999f && held < 100000) ++held;
    EXPECT_NEAR(held, samples(0.03 * std::log(0.8 / (open / 2))), 13);
    for (int i = 0; i < samples(0.2) - 1; ++i) gate.step_gate(Pair{});
    EXPECT_NEAR(gate.gate_gain, std::exp(-1.0f), 8e-3f) << "one release time later";
    gate.step_gate(both(static_cast<float>(open * 0.9)));
    EXPECT_FALSE(gate.gate_open) << "6 dB of hysteresis";
    for (int i = 0; i < samples(0.001); ++i) gate.step_gate(both(0.9f));
    EXPECT_GT(gate.gate_gain, 0.6f) << "opens within about a millisecond";
}

TEST(Ducker, SettlesOnItsStaticCurve) {
    struct {
        float threshold_db, detector, expected_db;
    } const rows[] = {
        {-6.0f, 1.0f, -4.8f},  {-60.0f, 1.0f, -48.0f}, {-20.0f, 0.1f, 0.0f},
        {-20.0f, 0.05f, 0.0f}, {-60.0f, 0.0f, 0.0f},   {0.0f, 2.0f, -4.8165f},
    };
    for (const auto& [threshold, detector, expected] : rows) {
        SCOPED_TRACE(threshold);
        Ducker ducker(rate);
        ducker.threshold_db = both(threshold);
        Pair out{};
        for (int i = 0; i < samples(0.3); ++i)
            out = ducker.process(Pair{1.0f, -0.5f}, both(detector));
        EXPECT_NEAR(20.0 * std::log10(static_cast<double>(out[0])), expected, 0.002);
        EXPECT_EQ(out[1], -0.5f * out[0]);
        EXPECT_LE(ducker.reduction_db[0], 0.0f);
    }
}

TEST(Ducker, DeepensWithTheAttackAndReturnsWithTheReleaseInDecibels) {
    Ducker ducker(rate);
    ducker.set_release(0.25f);
    for (int i = 0; i < samples(0.01); ++i) ducker.process(both(1.0f), both(1.0f));
    EXPECT_NEAR(ducker.reduction_db[0], -4.8f * (1.0f - std::exp(-1.0f)), 0.01f);
    for (int i = 0; i < samples(0.2); ++i) ducker.process(both(1.0f), both(1.0f));
    for (int i = 0; i < samples(0.25); ++i) ducker.process(both(1.0f), Pair{});
    EXPECT_NEAR(ducker.reduction_db[0], -4.8f * std::exp(-1.0f), 0.04f);
}

}  // namespace
}  // namespace orvane::blocks::vesk
