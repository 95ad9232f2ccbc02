// Ramps: their length, shape and end, sets in the middle of them, and rebuilds.
#include "smooth_value.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <vector>

#if !defined(_WIN32)
#include "interruptions.h"
#endif

namespace kv7::orv {
namespace {

struct Ramped {
    std::vector<double> heard;  // by the setter
    smooth_value value{0.5, 0.0, 1.5, [this](double v) { heard.push_back(v); }};
    ramp_list list;

    explicit Ramped(double rate) {
        list.add(value, 0);
        value.rebuilt(rate);
        heard.clear();
    }
    void vector(int frames) {
        list.scan();
        for (int i = 0; i < frames && !list.active().empty(); ++i) {
            heard.push_back(value.value_after(0));
            list.drop_ended();
            value.advance(1);
        }
    }
};

TEST(SmoothValue, RampsForFiveMillisecondsAtEveryRateAndLandsExactlyInVectorsOfAnySize) {
    for (const std::size_t calls : {220U, 240U, 480U, 40U}) {
        for (int frames = 1; frames < 500; frames += 7) {
            SCOPED_TRACE(frames);
            Ramped ramped(calls == 220 ? 44100.0 : 200.0 * static_cast<double>(calls));
            ramped.value.set_value(1.0);
            EXPECT_EQ(ramped.value.user_value, 1.0) << "reported at once";
            for (int n = 0; n < 500 + frames; n += frames) ramped.vector(frames);
            ASSERT_GE(ramped.heard.size(), calls);
            for (std::size_t i = 0; i < calls; ++i)
                ASSERT_NEAR(ramped.heard[i],
                            0.5 + 0.5 * static_cast<double>(i) / static_cast<double>(calls - 1),
                            1e-12);
            EXPECT_EQ(ramped.heard.back(), 1.0);
            const std::size_t done = ramped.heard.size();
            ramped.vector(64);
            EXPECT_EQ(ramped.heard.size(), done) << "idle: the setter rests";
        }
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
    for (const auto& [set, reported] :
         {std::pair{-1.0, 0.0}, {9.0, 1.5}, {std::nan(""), 1.5}, {-INFINITY, 0.0}, {0.25, 0.25}}) {
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

#if !defined(_WIN32)
smooth_value interrupted{0, 0, 1e9, [](double) {}};
std::atomic<int> sets{1000};

// A setter in a signal handler comes between any two instructions of a scan: what it sets is taken
// by this scan or by the next.
TEST(SmoothValue, LosesNoSetThatComesInTheMiddleOfAScan) {
    ramp_list list;
    list.add(interrupted, 0);
    const Interruptions often([](int) { interrupted.set_value(++sets); });
    while (sets < 4000) {
        interrupted.set_value(1);
        const int before = sets;
        list.scan();
        const int after = sets;
        list.scan();
        if (before != after && after == sets) {
            ASSERT_EQ(interrupted.target, after);
        }
    }
}
#endif

}  // namespace
}  // namespace kv7::orv
