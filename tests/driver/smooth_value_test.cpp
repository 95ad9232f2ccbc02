// Ramps: their length, shape and end, sets in the middle of them and from other threads.
#include "smooth_value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

namespace kv7::orv {
namespace {

struct Ramped {
    std::vector<double> heard;  // by the setter
    smooth_value value{0.5, 0.0, 1.5, [this](double v) { heard.push_back(v); }};
    ramp_list list;

    explicit Ramped(double rate) {
        list.add(value);
        value.rebuilt(rate);
        heard.clear();
    }
    void vector(int frames) {
        list.scan();
        for (int i = 0; list.any_active() && i < frames; ++i) list.run_step();
    }
};

TEST(SmoothValue, RampsForFiveMillisecondsAtEveryRateAndLandsExactly) {
    struct {
        double rate;
        std::size_t calls;
    } const rows[] = {{44100, 220}, {48000, 240}, {96000, 480}, {8000, 40}};
    for (const auto& [rate, calls] : rows) {
        SCOPED_TRACE(rate);
        Ramped ramped(rate);
        ramped.value.set_value(1.0);
        EXPECT_EQ(ramped.value.user_value, 1.0) << "reported at once";
        for (int v = 0; v < 10; ++v) ramped.vector(64);
        ASSERT_GE(ramped.heard.size(), calls);
        EXPECT_EQ(ramped.heard[0], 0.5) << "opens on the old value";
        EXPECT_LT(ramped.heard[calls - 2], 1.0);
        EXPECT_EQ(ramped.heard[calls - 1], 1.0);
        for (std::size_t i = 1; i < calls; ++i)
            ASSERT_NEAR(ramped.heard[i] - ramped.heard[i - 1], 0.5 / static_cast<double>(calls - 1),
                        1e-12);
        const std::size_t done = ramped.heard.size();
        ramped.vector(64);
        EXPECT_EQ(ramped.heard.size(), done) << "idle: the setter rests";
    }
}

TEST(SmoothValue, TheFinalValueIsHeardWhereverTheRampEnds) {
    for (int frames = 1; frames < 260; ++frames) {
        Ramped ramped(48000);
        ramped.value.set_value(1.25);
        for (int n = 0; n < 300 + frames; n += frames) ramped.vector(frames);
        ASSERT_EQ(ramped.heard.back(), 1.25) << "vectors of " << frames;
    }
}

TEST(SmoothValue, ASetInTheMiddleStartsAnewFromWhereTheRampStands) {
    Ramped ramped(48000);
    ramped.value.set_value(1.0);
    ramped.vector(120);
    const double middle = ramped.value.current;
    ramped.value.set_value(0.2);
    ramped.value.set_value(1.0);  // several leave the last; the old target starts a new ramp too
    ramped.vector(239);
    EXPECT_EQ(ramped.heard[120], middle);
    EXPECT_LT(ramped.heard.back(), 1.0);
    ramped.vector(1);
    EXPECT_EQ(ramped.heard.back(), 1.0);

    ramped.value.set_value(0.0);
    ramped.vector(10);
    ramped.value.set_value(ramped.value.current);  // ends the ramp there
    const double stopped = ramped.value.current;
    ramped.heard.clear();
    ramped.vector(10);
    ASSERT_EQ(ramped.heard.size(), 1U) << "handed on once more when it comes to rest";
    EXPECT_EQ(ramped.heard[0], stopped);
}

TEST(SmoothValue, ClampsAndLandsAtOnceWhereNoRampIsDue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    struct {
        double set, reported;
    } const rows[] = {{-1, 0}, {9, 1.5}, {nan, 1.5}, {infinity, 1.5}, {-infinity, 0}, {0.25, 0.25}};
    for (const auto& [set, reported] : rows) {
        Ramped ramped(399);  // one sample
        ramped.value.set_value(set);
        ramped.vector(64);
        EXPECT_EQ(ramped.value.user_value, reported);
        EXPECT_EQ(ramped.value.current, reported);
        EXPECT_TRUE(ramped.heard.empty());
    }
}

TEST(SmoothValue, ARebuildTakesAWaitingTargetWithTheOldLengthAndHandsOnWhereTheRampStands) {
    Ramped ramped(48000);
    ramped.value.set_value(1.0);
    ramped.vector(100);
    const double middle = ramped.value.current;
    ramped.value.rebuilt(96000);
    EXPECT_EQ(ramped.heard.back(), middle);
    EXPECT_EQ(ramped.value.ramp_samples, 480U);

    smooth_value fresh{0.5, 0, 1, [](double) {}};
    fresh.set_value(0.75);
    fresh.rebuilt(44100);
    EXPECT_EQ(fresh.current, 0.75) << "before the first rebuild no ramp is due";
}

TEST(SmoothValue, TakesSetsFromOtherThreadsWhole) {
    Ramped ramped(48000);
    std::atomic<bool> stop{false};
    std::thread first([&] {
        for (int i = 0; i < 20000; ++i) ramped.value.set_value(i % 2 == 0 ? 0.25 : 1.25);
        stop = true;
    });
    while (!stop) {
        ramped.vector(32);
        if (ramped.heard.size() > 100000) ramped.heard.clear();
        const double reported = ramped.value.user_value;
        ASSERT_TRUE(reported == 0.5 || reported == 0.25 || reported == 1.25);
    }
    first.join();
    ramped.value.set_value(0.875);
    for (int i = 0; i < 10; ++i) ramped.vector(64);
    EXPECT_EQ(ramped.heard.back(), 0.875);
}

}  // namespace
}  // namespace kv7::orv
