// The oscillator's shapes against their closed forms, the envelope's times, and "Random".
#include "engine/modulator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace orvane::blocks::vesk {
namespace {

using kv7::orv::vesk::waveform_mode;
constexpr float rate = 48000.0f;

// The oscillator without its smoother.
Modulator unsmoothed(waveform_mode waveform, float hz, float degrees) {
    Modulator m(rate);
    m.waveform = waveform;
    m.set_frequency(hz);
    m.set_phase_offset(degrees);
    m.smoothing_coefficient = 1.0f;
    return m;
}

double shape(waveform_mode waveform, double phase) {
    const double f = phase - std::floor(phase);
    const double saw = f < 0.5 ? 2 * f : 2 * f - 2;
    switch (waveform) {
        case waveform_mode::sine:
            return std::sin(2 * std::numbers::pi * f);
        case waveform_mode::triangle:
            return std::asin(std::sin(2 * std::numbers::pi * f)) / (std::numbers::pi / 2);
        case waveform_mode::saw_up:
            return saw;
        case waveform_mode::saw_down:
            return -saw;
        default:
            return f < 0.5 ? 1 : -1;
    }
}

TEST(Modulator, RunsTheNamedShapesWithTheRightChannelAhead) {
    for (const waveform_mode waveform :
         {waveform_mode::sine, waveform_mode::triangle, waveform_mode::saw_up,
          waveform_mode::saw_down, waveform_mode::square}) {
        for (const double degrees : {0.0, 90.0, 180.0}) {
            SCOPED_TRACE(static_cast<int>(waveform));
            // 93.75 Hz: a period of 512 samples, exact in floats.
            Modulator m = unsmoothed(waveform, 93.75f, static_cast<float>(degrees));
            for (int n = 0; n < 2000; ++n) {
                const Pair value = m.process(Pair{});
                ASSERT_NEAR(value[0], shape(waveform, n / 512.0), 1e-5) << n;
                ASSERT_NEAR(value[1], shape(waveform, n / 512.0 + degrees / 360), 1e-5) << n;
            }
        }
    }
}

TEST(Modulator, RandomHoldsBetweenWrapsAndBlendsToItsOppositeAtHalfATurn) {
    for (const float degrees : {0.0f, 45.0f, 90.0f, 180.0f}) {
        SCOPED_TRACE(degrees);
        Modulator m = unsmoothed(waveform_mode::random, 480.0f, degrees);
        int changes = 0;
        double product = 0.0, power = 0.0;
        Pair last = m.process(Pair{});
        for (int n = 1; n < 480000; ++n) {
            const Pair value = m.process(Pair{});
            changes += value[0] != last[0];
            last = value;
            ASSERT_LE(std::abs(value[0]), 1.0f);
            product += static_cast<double>(value[0] * value[1]);
            power += static_cast<double>(value[0] * value[0]);
            if (degrees == 0.0f) {
                ASSERT_EQ(value[0], value[1]);
            }
            if (degrees == 180.0f) {
                ASSERT_EQ(value[0], -value[1]);
            }
        }
        EXPECT_NEAR(changes, 4800, 48) << "one draw a period";
        EXPECT_NEAR(power / 480000, 1.0 / 3, 0.02) << "uniform from -1 to 1";
        if (degrees == 90.0f) {
            EXPECT_NEAR(product / power, 0.0, 0.05) << "independent";
        }
        if (degrees == 45.0f) {
            EXPECT_NEAR(product / power, 0.5, 0.05);
        }
    }
}

TEST(Modulator, DrawsAnewAtTheFirstSampleAfterAResetAndAtEverySecondOneAtItsTopFrequency) {
    Modulator m = unsmoothed(waveform_mode::random, 1.0f, 0.0f);
    const Pair held = m.random_value;
    m.process(Pair{});
    EXPECT_NE(m.random_value[0], held[0]);
    m.set_frequency(1e6f);
    EXPECT_EQ(m.frequency, 1e6f);
    EXPECT_EQ(m.phase_increment, 0.5f) << "limited to half the rate";
    m.reset();
    int changes = 0;
    float last = m.process(Pair{})[0];
    for (int n = 0; n < 1000; ++n) {
        const float value = m.process(Pair{})[0];
        changes += value != last;
        last = value;
    }
    EXPECT_EQ(changes, 500);
}

TEST(Modulator, TheGeneratorRunsAsGiven) {
    Modulator m(rate);
    m.random_state = {1, 2};
    // By hand: t = 1 ^ 1024 = 1025; s1 = 2 ^ 0 ^ 1025 ^ 0 = 1027; the top 23 bits are 2.
    EXPECT_EQ(m.next_random(), -1.0f + 2 * 0x1p-22f);
    EXPECT_EQ(m.random_state[0], 2U);
    EXPECT_EQ(m.random_state[1], 1027U);
    EXPECT_FALSE(Modulator(rate).random_state == Modulator(rate).random_state) << "seeded apart";
}

TEST(Modulator, TheEnvelopeFollowsWithItsAttackAndReleaseAndATenthIsAFullSwing) {
    Modulator m = unsmoothed(waveform_mode::square, 1.0f, 0.0f);
    m.envelope_mix = 1.0f;
    const auto run = [&](double seconds, Pair level) {
        Pair value{};
        for (int i = 0; i < static_cast<int>(seconds * 48000); ++i) value = m.process(level);
        return value;
    };
    EXPECT_NEAR(run(0.008, Pair{0.1f, -0.05f})[0], 1.0f - std::exp(-1.0f), 1e-3f);
    const Pair settled = run(0.2, Pair{0.1f, -0.05f});
    EXPECT_NEAR(settled[0], 1.0f, 1e-4f);
    EXPECT_NEAR(settled[1], 0.5f, 1e-4f);
    EXPECT_NEAR(run(0.222, Pair{})[0], std::exp(-1.0f), 8e-3f) << "a coarse coefficient";
}

TEST(Modulator, TheSmootherRoundsAStepWithItsThirtyHertz) {
    Modulator m(rate);
    m.waveform = waveform_mode::square;
    const int time_constant = static_cast<int>(48000 / (2 * std::numbers::pi * 30));
    Pair value{};
    for (int i = 0; i < time_constant; ++i) value = m.process(Pair{});
    EXPECT_NEAR(value[0], 1.0f - std::exp(-1.0f), 5e-3f);
}

}  // namespace
}  // namespace orvane::blocks::vesk
