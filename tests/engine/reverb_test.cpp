// The plate: lengths and filters at given rates, first arrivals, decay, lanes, and clearing.
#include "engine/reverb.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace orvane::blocks::vesk {
namespace {

struct Arrivals {
    int a = -1;
    int b = -1;
};

Arrivals first_arrivals(Reverb& reverb, int limit) {
    Arrivals found;
    for (int n = 0; n < limit; ++n) {
        const Reverb::Sums<Pair> sums = reverb.process(both(n == 0 ? 1.0f : 0.0f));
        if (found.a < 0 && sums.a[0] != 0.0f) found.a = n;
        if (found.b < 0 && sums.b[1] != 0.0f) found.b = n;
    }
    return found;
}

double energy(Reverb& reverb, int samples, bool impulse) {
    double sum = 0.0;
    for (int n = 0; n < samples; ++n) {
        const Reverb::Sums<Pair> sums = reverb.process(both(impulse && n == 0 ? 1.0f : 0.0f));
        sum += static_cast<double>(sums.a[0]) * static_cast<double>(sums.a[0]);
    }
    return sum;
}

TEST(Reverb, ScalesEveryLengthToTheRate) {
    const Reverb at44(44100.0f), at48(48000.0f);
    EXPECT_EQ(at44.predelay.size, 11026U);
    EXPECT_EQ(at44.predelay_samples, 441U);
    EXPECT_EQ(at48.predelay_samples, 480U);
    const std::uint64_t sizes48[] = {229, 173, 611, 447};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(at48.diffusers[i].ring.size, sizes48[i]);
    EXPECT_EQ(at44.tank_allpass_in[0].ring.size, 1021U);
    EXPECT_EQ(at48.tank_allpass_in[1].ring.size, 1492U);
    EXPECT_EQ(at44.tank_allpass_out[1].ring.size, 3936U);
    EXPECT_EQ(at48.tank_delay_in[0].size, 7182U);
    EXPECT_EQ(at44.tank_delay_out[1].size, 4687U);
    const std::array<std::uint64_t, 14> taps48{429, 4797, 3085, 3219, 3210, 302, 1719,
                                               569, 5850, 1981, 4311, 3405, 540, 195};
    EXPECT_EQ(at48.output_taps, taps48);
    const Reverb slow(20.0f);
    EXPECT_EQ(slow.diffusers[0].ring.size, 1U) << "no line shorter than one sample";
}

TEST(Reverb, TheFiltersKeepTheirGainAtBothEndsOfTheBand) {
    const MatchedLowpass filter = design_matched_lowpass(both(16000.0f), both(44100.0f));
    EXPECT_FLOAT_EQ(filter.coefficient[0], 1.6958488f);
    EXPECT_FLOAT_EQ(filter.high_gain[0], 0.6682693f);
    // Measured on the impulse response, against the analogue one-pole the design matches.
    for (const double cutoff : {2000.0, 12000.0}) {
        const MatchedLowpass f =
            design_matched_lowpass(both(static_cast<float>(cutoff)), both(48000.0f));
        Pair state{};
        std::complex<double> at_zero, at_top, at_cutoff;
        for (int n = 0; n < 2000; ++n) {
            const auto h = static_cast<double>(f.process(both(n == 0 ? 1.0f : 0.0f), state)[0]);
            at_zero += h;
            at_top += n % 2 == 0 ? h : -h;
            at_cutoff += h * std::polar(1.0, -2 * std::numbers::pi * cutoff / 48000 * n);
        }
        EXPECT_NEAR(std::abs(at_zero), 1.0, 1e-5);
        EXPECT_NEAR(std::abs(at_top), f.high_gain[0], 1e-4);
        EXPECT_NEAR(20 * std::log10(std::abs(at_cutoff)), -3.01, 0.6);
    }
}

TEST(Reverb, AnImpulseFirstShowsBehindPredelayAndFirstTap) {
    Reverb reverb(44100.0f);
    const Arrivals found = first_arrivals(reverb, 2000);
    EXPECT_EQ(found.a, 441 + 394);
    EXPECT_EQ(found.b, 441 + 523);
}

TEST(Reverb, TheTailGrowsWithTheDecayAndStaysOutOfTheLoopWithNone) {
    double last = 0.0;
    for (const float decay : {0.0f, 0.3f, 0.6f, 0.9f}) {
        SCOPED_TRACE(decay);
        Reverb reverb(44100.0f);
        reverb.decay = both(decay);
        const double early = energy(reverb, 22050, true);
        const double late = energy(reverb, 44100, false);
        EXPECT_GT(early, 0.0);
        EXPECT_GT(late, last);
        last = late;
        bool looped = false;
        for (std::uint64_t k = 0; k < 2667; ++k)
            looped |= reverb.tank_allpass_out[0].ring.at(k)[0] != 0.0f;
        EXPECT_EQ(looped, decay != 0.0f);
    }
}

TEST(Reverb, LanesMeetNowhereAndEqualLanesStayEqual) {
    Reverb one(48000.0f), two(48000.0f);
    for (int n = 0; n < 30000; ++n) {
        const float left = std::sin(static_cast<float>(n) * 0.05f);
        const float right = n % 5000 == 0 ? 1.0f : 0.0f;
        const Reverb::Sums<Pair> a = one.process(Pair{left, right});
        const Reverb::Sums<Pair> b = two.process(both(left));
        ASSERT_EQ(a.a[0], b.a[0]) << n;
        ASSERT_EQ(a.b[0], b.b[0]) << n;
        ASSERT_EQ(b.a[0], b.a[1]) << n;
    }
}

TEST(Reverb, AClearedOneIsSilentAndSoundsLikeAFreshOne) {
    Reverb used(48000.0f), fresh(48000.0f);
    energy(used, 50000, true);
    used.clear();
    EXPECT_EQ(energy(used, 20000, false), 0.0);
    used.clear();
    for (int n = 0; n < 30000; ++n) {
        const Pair x = both(n % 700 == 0 ? 0.5f : 0.0f);
        ASSERT_EQ(used.process(x).a[0], fresh.process(x).a[0]) << n;
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
