// Where the heads read: exact delays, fades, glides, limits, and clearing in constant time.
#include "engine/delay_section.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "test_signals.h"

namespace orvane::blocks::vesk {
namespace {

constexpr float rate = 48000.0f;

// A section whose line holds a rising count, so that what is read tells where: n at call n.
struct Counted {
    DelaySection section;
    std::int64_t calls = 0;

    explicit Counted(bool repitch, float seconds, float at_rate = rate) : section(at_rate) {
        section.delay_time = both(seconds);
        section.repitch = repitch;
        section.reset_read_heads();
    }
    // The age in samples of what left and right read.
    Pair age(Pair speed = Pair{}) {
        const Pair read = section.read_delay(speed);
        const auto now = static_cast<float>(calls);
        section.write_delay(both(now));
        ++calls;
        return now - read;
    }
    void run(int n, Pair speed = Pair{}) {
        for (int i = 0; i < n; ++i) age(speed);
    }
};

TEST(DelaySection, ReadsWholeDelaysExactlyAndNeverLessThanTwoSamples) {
    struct {
        float samples;
        float expected;
    } const rows[] = {{0, 2}, {1, 2}, {2, 2}, {3, 3}, {64, 64}, {1000, 1000}, {4801, 4801}};
    for (const auto& [samples, expected] : rows) {
        SCOPED_TRACE(samples);
        Counted crossfade(false, samples / rate);
        crossfade.run(static_cast<int>(samples) + 5000);
        Counted tape(true, samples / rate);
        tape.run(static_cast<int>(samples) + 5000);
        for (int i = 0; i < 3000; ++i) {  // over several fades
            // Inside a fade the mix of two equal samples rounds by up to one unit.
            const float ulp = static_cast<float>(crossfade.calls) * 0x1p-23f;
            ASSERT_NEAR(crossfade.age()[0], expected, ulp);
            ASSERT_NEAR(tape.age()[0], expected, 0.02f);
        }
    }
}

TEST(DelaySection, StartsSilentAndAtTheDelayAtOnce) {
    for (const bool repitch : {false, true}) {
        Counted counted(repitch, 0.01f);  // 480 samples
        for (int n = 0; n < 480; ++n) ASSERT_EQ(counted.age()[0], static_cast<float>(n));
        ASSERT_NEAR(counted.age()[0], 480.0f, 0.01f);
    }
}

TEST(DelaySection, ANewDelayIsFadedToInTwentyFiveMillisecondsWithoutAPitchChange) {
    Counted counted(false, 0.1f);
    counted.run(20000);
    counted.section.delay_time = both(0.05f);
    const int fade = 1199;  // samples, at 48 kHz
    int waited = 0;
    float last = 4800.0f;
    for (; last == 4800.0f; last = counted.age()[0]) ++waited;
    EXPECT_LE(waited, fade + 1) << "taken up by the next fade";
    for (int i = 2; i < fade - 1; ++i) {
        const float age = counted.age()[0];
        ASSERT_NEAR(age - last, -2400.0f / static_cast<float>(fade), 0.02f) << "linear in gain";
        last = age;
    }
    counted.run(2);
    EXPECT_EQ(counted.age()[0], 2400.0f);
}

TEST(DelaySection, AChangeWithinAFadeWaitsForItsEnd) {
    Counted one(false, 0.1f), two(false, 0.1f);
    one.run(2 * 1199 + 10);
    two.run(2 * 1199 + 10);
    two.section.delay_time = both(0.03f);  // 10 samples into a fade
    for (int i = 10; i < 1199; ++i) ASSERT_EQ(one.age()[0], two.age()[0]) << i;
    two.run(2);
    EXPECT_NE(one.age()[0], two.age()[0]);
}

TEST(DelaySection, InRepitchModeTheDelayGlidesAndSettles) {
    Counted counted(true, 0.1f);
    counted.run(10000);
    counted.section.delay_time = both(0.2f);
    float last = counted.age()[0];
    for (int i = 0; i < 200000; ++i) {
        const float age = counted.age()[0];
        ASSERT_LT(std::abs(age - last), 0.6f) << "a jump in the position, at " << i;
        last = age;
    }
    EXPECT_NEAR(last, 9600.0f, 0.1f);
    EXPECT_EQ(counted.section.smoothed_delay[0], 9600.0f) << "the smoother snaps onto its goal";
}

// The stretch between write and read behaves like tape: against a walk over the whole history.
TEST(DelaySection, ReadsWhereTheEntriesAddUpToTheSpan) {
    TestNoise noise(5);
    Counted counted(false, 0.003f);  // 144 samples
    std::vector<double> speeds;
    double octaves = 0.0;
    for (int n = 0; n < 20000; ++n) {
        octaves = std::clamp(octaves + noise.unit() * 0.02 - 0.01, -1.0, 1.0);
        const auto octave = static_cast<float>(octaves);
        speeds.push_back(static_cast<double>(fast_exp2(octave)));
        const float age = counted.age(both(octave))[0];
        if (n < 1000) continue;
        double rest = 144.0 + speeds.back() / 2, position = 0.0;
        for (std::size_t k = speeds.size(); k-- > 0; rest -= speeds[k], position += 1.0)
            if (speeds[k] > rest) {
                position += rest / speeds[k];
                break;
            }
        ASSERT_NEAR(age, std::max(position - 0.5, 2.0), 0.01) << n;
    }
}

TEST(DelaySection, ModeChangesCauseNoJump) {
    Counted counted(false, 0.02f);
    counted.run(5000);
    for (int i = 0; i < 20; ++i) {
        counted.section.set_repitch(i % 2 == 0);
        for (int k = 0; k < 50; ++k) ASSERT_NEAR(counted.age()[0], 960.0f, 0.01f);
    }
}

TEST(DelaySection, AClearedLineIsSilentForOneDelayWhateverWasOnIt) {
    for (const bool repitch : {false, true}) {
        SCOPED_TRACE(repitch);
        Counted counted(repitch, 0.1f);
        counted.run(50000);
        counted.section.clear_delay_lines();
        EXPECT_EQ(counted.section.delay_filled, 4U);
        for (int n = 0; n < 4790; ++n) {
            ASSERT_EQ(counted.age()[0], static_cast<float>(50000 + n))
                << "not a zero that was read";
        }
        counted.run(20);
        EXPECT_NEAR(counted.age()[0], 4800.0f, 0.01f);
    }
}

TEST(DelaySection, WildSpeedsStayOnTheLineAndComeBack) {
    const float wild[] = {200.0f,
                          40.0f,
                          -200.0f,
                          -40.0f,
                          std::numeric_limits<float>::quiet_NaN(),
                          std::numeric_limits<float>::infinity()};
    for (const bool repitch : {false, true}) {
        for (const float speed : wild) {
            SCOPED_TRACE(speed);
            Counted counted(repitch, 0.01f, 8000.0f);
            counted.run(3000);
            for (int i = 0; i < 3000; ++i) {
                const Pair age = counted.age(both(speed));
                ASSERT_GE(age[0], 2.0f - 0.01f);
                ASSERT_LE(age[0], static_cast<float>(counted.calls));
            }
            counted.run(static_cast<int>(8.0f * 8000.0f) + 3000);  // the wild entries have passed
            ASSERT_NEAR(counted.age()[0], 80.0f, 0.02f);
        }
    }
}

TEST(DelaySection, RunsRoundItsRingsWithoutASeam) {
    Counted counted(false, 7.9f, 8000.0f);
    counted.run(200000);  // three times round the line
    for (int i = 0; i < 70000; ++i) {
        const float ulp = static_cast<float>(counted.calls) * 0x1p-23f;
        ASSERT_NEAR(counted.age()[0], 63200.0f, ulp);
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
