// Where the heads read: at exact delays, at limits, behind a glide, and on a cleared line.
#include "engine/delay_section.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvane::blocks::vesk {
namespace {

// A section whose line holds a rising count, so that what is read tells where: n at call n.
struct Counted {
    DelaySection section;
    int calls = 0;

    explicit Counted(bool repitch, float seconds, float rate) : section(rate) {
        section.delay_time = broadcast<Pair>(seconds);
        section.repitch = repitch;
        section.reset_read_heads();
    }
    // The age in samples of what the left channel reads.
    float age(float speed = 0.0f) {
        const auto now = static_cast<float>(calls++);
        const float read = section.read_delay(broadcast<Pair>(speed))[0];
        section.write_delay(broadcast<Pair>(now));
        return now - read;
    }
    void run(int n, float speed = 0.0f) {
        for (int i = 0; i < n; ++i) age(speed);
    }
};

TEST(DelaySection, ReadsWholeDelaysExactlyNeverLessThanTwoSamplesAndRoundItsRings) {
    for (const int samples : {0, 1, 2, 3, 64, 1000, 4801, 63200}) {
        for (const bool repitch : {false, true}) {
            SCOPED_TRACE(samples);
            Counted counted(repitch, static_cast<float>(samples) / 8000.0f, 8000.0f);
            counted.run(samples + 5000);
            for (int i = 0; i < 70000; ++i) {  // over fades and the ends of the rings
                // Inside a fade the mix of two equal samples rounds by up to one unit.
                const float unit = static_cast<float>(counted.calls) * 0x1p-23f;
                ASSERT_NEAR(counted.age(), std::max(samples, 2),
                            repitch ? std::max(0.02f, 1e-5f * static_cast<float>(samples)) : unit);
            }
        }
    }
}

TEST(DelaySection, InRepitchModeTheDelaySettlesOnItsGoal) {
    Counted counted(true, 0.1f, 48000.0f);
    counted.section.delay_time = broadcast<Pair>(0.2f);
    counted.run(200000);
    EXPECT_NEAR(counted.age(), 9600.0f, 0.1f);
    EXPECT_EQ(counted.section.smoothed_delay[0], 9600.0f) << "the smoother snaps onto it";
}

TEST(DelaySection, AClearedLineIsSilentForOneDelayWhateverWasOnIt) {
    for (const bool repitch : {false, true}) {
        Counted counted(repitch, 0.1f, 48000.0f);
        counted.run(50000);
        counted.section.clear_delay_lines();
        for (int n = 0; n < 4790; ++n)
            ASSERT_EQ(counted.age(), static_cast<float>(50000 + n)) << "not a zero that was read";
        counted.run(20);
        EXPECT_NEAR(counted.age(), 4800.0f, 0.01f);
    }
}

TEST(DelaySection, AChangeOfModeFindsTheDelayAtOnceOnTheSoundingLine) {
    for (const bool repitch : {false, true}) {
        Counted counted(repitch, 0.1f, 48000.0f);
        counted.run(450000, 0.5f);  // other entries stand on all of the ring
        for (const bool mode : {!repitch, repitch}) {
            counted.section.set_repitch(mode);
            for (int i = 0; i < 3000; ++i) ASSERT_NEAR(counted.age(), 4800.0f, 0.1f) << i;
        }
    }
}

TEST(DelaySection, WildSpeedsStayOnTheLineAndComeBack) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const bool repitch : {false, true}) {
        for (const float speed : {200.0f, 40.0f, -200.0f, -40.0f, std::nanf(""), infinity}) {
            SCOPED_TRACE(speed);
            Counted counted(repitch, 0.01f, 8000.0f);
            counted.run(3000);
            for (int i = 0; i < 3000; ++i) {
                const float age = counted.age(speed);
                ASSERT_GE(age, 2.0f - 0.01f);
                ASSERT_LE(age, static_cast<float>(counted.calls));
            }
            counted.run(67000);  // the wild entries have passed
            ASSERT_NEAR(counted.age(), 80.0f, 0.02f);
        }
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
