// What the effect does, stated as laws: each expected value is a sum done by hand or a closed form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <numbers>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "attribute_table.h"
#include "engine/vesk.h"
#include "scenario.h"

namespace {

using orvane::blocks::vesk::Frame;
using Input = std::function<Frame(int)>;

// An engine with a wet delay of 0.3 s and the settings given as "NAME V..., NAME V...".
struct Effect {
    orvane::blocks::vesk::Vesk engine;

    Effect(float rate, const std::string& settings) : engine(rate) {
        set("repitch 0, mix 1, feedback 0, delay 0.3, " + settings);
        engine.reset_read_heads();
    }
    void set(const std::string& settings) {
        std::istringstream list(settings);
        for (std::string item, name; std::getline(list, item, ',');) {
            std::istringstream words(item);
            if (!(words >> name)) continue;
            const std::vector<double> values{std::istream_iterator<double>(words), {}};
            scenario::set(engine, kv7::orv::attribute_index(name), values);
        }
    }
    std::vector<Frame> play(int frames, const Input& input) {
        std::vector<Frame> out;
        for (int n = 0; n < frames; ++n) out.push_back(engine.process(input(n)));
        return out;
    }
};

Input impulse(float left, float right) {
    return [=](int n) { return n == 0 ? Frame{left, right} : Frame{}; };
}

Input steady(float x) {
    return [=](int) { return Frame{x, x}; };
}

// Left carries a and right b; every echo within 47 ms, and silence between. At this level the
// saturator is linear.
TEST(Laws, EchoesAreMatricesOfTheInput) {
    constexpr float a = 0.01f, b = 0.004f, root = 0.70710678f;
    constexpr float mid = (a + b) / 2, side = (a - b) / 2, both = (a + b) * root;
    struct Echo {
        int ms;
        float left, right;
    };
    const std::pair<const char*, std::vector<Echo>> rows[] = {
        {"feedback 0.5", {{10, a, 0}, {20, a / 2, 0}, {25, 0, b}, {30, a / 4, 0}, {40, a / 8, 0}}},
        {"feedback 0.5, fbinvert 1, repitch 1",
         {{10, a, 0}, {20, -a / 2, 0}, {25, 0, b}, {30, a / 4, 0}, {40, -a / 8, 0}}},
        {"feedback 0.5, channel_mode 1", {{10, both, 0}, {35, 0, both}, {45, both / 4, 0}}},
        {"channel_mode 2, feedback 0.5",
         {{10, mid, mid},
          {20, mid / 2, mid / 2},
          {25, side, -side},
          {30, mid / 4, mid / 4},
          {40, mid / 8, mid / 8}}},
        {"width 0", {{10, a / 2, a / 2}, {25, b / 2, b / 2}}},
        {"width 2", {{10, 1.5f * a, -0.5f * a}, {25, -0.5f * b, 1.5f * b}}},
        {"mix 0.25", {{0, 0.75f * a, 0.75f * b}, {10, a / 4, 0}, {25, 0, b / 4}}},
        {"drywetmode 1, mix 0.5", {{0, a * root, b * root}, {10, a * root, 0}, {25, 0, b * root}}},
        {"input 6, output -26, mix 0.5", {{0, a / 2, b / 2}, {10, a / 20, 0}, {25, 0, b / 20}}},
    };
    for (const auto& [settings, echoes] : rows) {
        SCOPED_TRACE(settings);
        std::vector<Frame> expected(47 * 8);
        for (const auto& [ms, left, right] : echoes)
            expected[static_cast<std::size_t>(ms * 8)] = {left, right};
        const auto out =
            Effect(8000, std::string("delay 0.01 0.025, ") + settings).play(47 * 8, impulse(a, b));
        for (std::size_t n = 0; n < out.size(); ++n) {
            ASSERT_NEAR(out[n].left, expected[n].left, 2e-5f) << n;
            ASSERT_NEAR(out[n].right, expected[n].right, 2e-5f) << n;
        }
    }
}

// What a unit does to the gain while the input steps from quiet to loud at 0.4 s and to after at
// 0.8 s, at a time in seconds. The line is 0.3 s long.
double gain_at(double time, const std::string& unit, double delay, float quiet, float loud,
               float after) {
    const Input steps = [=](int n) {
        const float x = n < 19200 ? quiet : n < 38400 ? loud : after;
        return Frame{x / 2, -x};
    };
    const int frames = static_cast<int>((time + delay) * 48000) + 1;
    return Effect(48000, unit).play(frames, steps).back().right /
           Effect(48000, "").play(frames, steps).back().right;
}

TEST(Laws, TheDuckerFollowsTheLouderSideInDecibels) {
    // 20 dB over the threshold at 5 to 1 are 16 dB; attack 10 ms.
    const std::pair<double, double> rows[] = {
        {0.39, 0},   {0.41, -16 * (1 - std::exp(-1))}, {0.43, -16 * (1 - std::exp(-3))},
        {0.79, -16}, {0.81, -16 * std::exp(-0.5)},     {0.82, -16 * std::exp(-1)}};
    for (const auto& [time, db] : rows)
        EXPECT_NEAR(20 * std::log10(gain_at(time, "duck 1, duck_threshold -20, duck_release 0.02",
                                            0, 0.05f, 1, 0.05f)),
                    db, 0.1)
            << time;
    Effect low(8000, "duck 1, duck_threshold -80");  // 10 dB below the level
    low.play(4000, steady(std::pow(10.0f, -3.5f)));
    EXPECT_NEAR(low.engine.ducker.reduction_db[0], -8, 0.01);
    // At equality it is the release, which without time keeps the level exactly; the attack would
    // round at one level in a hundred.
    Effect exact(8000, "duck 1, duck_threshold -40, duck_release 0");
    exact.play(2000, steady(1));
    for (float level = 0.999f; level > 0.02f; level -= 0.0005f) {
        exact.play(1, steady(level));
        const auto reduction = exact.engine.ducker.reduction_db[0];
        exact.play(1, steady(level));
        ASSERT_EQ(exact.engine.ducker.reduction_db[0], reduction) << level;
    }
}

TEST(Laws, TheGateOpensOverItsThresholdAndShutsAtHalfOfIt) {
    const auto gate = [](double time, const std::string& settings, float loud, float after) {
        return gain_at(time, "gate 1, gate_release 0.02, " + settings, 0.3, 0.02f, loud, after);
    };
    // Attack 1 ms; the level falls by 30 ms, from twice the threshold to half of it.
    const double shut = 0.8 + 0.03 * std::log(4);
    const std::pair<double, double> rows[] = {{0.399, 0},
                                              {0.401, 1 - std::exp(-1)},
                                              {0.42, 1},
                                              {shut - 0.001, 1},
                                              {shut + 0.02, std::exp(-1)}};
    for (const auto& [time, gain] : rows)
        EXPECT_NEAR(gate(time, "gate_threshold -20", 0.2f, 0.02f), gain, 0.015) << time;
    EXPECT_EQ(gate(0.79, "gate_threshold 0", 1, 0), 0) << "equality does not open";
    EXPECT_NEAR(gate(1.8, "gate_threshold 0", 1.01f, 0.501f), 1, 1e-4);
    EXPECT_LT(gate(1.8, "gate_threshold 0", 1.01f, 0.5f), 1e-3) << "equality shuts";
}

TEST(Laws, EachWaveformHasItsShapeAndTheRightSideIsAhead) {
    const std::function<double(double)> shapes[] = {
        [](double p) { return std::sin(2 * std::numbers::pi * p); },
        [](double p) {
            return 2 / std::numbers::pi * std::asin(std::sin(2 * std::numbers::pi * p));
        },
        [](double p) { return p < 0.5 ? 2 * p : 2 * p - 2; },
        [](double p) { return p < 0.5 ? -2 * p : 2 - 2 * p; },
        [](double p) { return p < 0.5 ? 1.0 : -1.0; },
    };
    for (int waveform = 0; waveform < 5; ++waveform)
        for (const int degrees : {0, 90, 180}) {
            SCOPED_TRACE(std::to_string(waveform) + " at " + std::to_string(degrees));
            Effect effect(8000, "mod_freq 0.5, mod_waveform " + std::to_string(waveform) +
                                    ", mod_phase " + std::to_string(degrees));
            effect.play(1000, steady(0));  // a sixteenth of a period
            for (double p = 0.0625; p < 2; p += 0.125) {
                const auto value = effect.engine.modulator.smoothed;
                const auto shape = [&](double phase) {
                    // The smoother is 5.3 ms late.
                    phase -= 0.0053 / 2;
                    return shapes[waveform](phase - std::floor(phase));
                };
                EXPECT_NEAR(value[0], shape(p), 0.002) << p;
                EXPECT_NEAR(value[1], shape(p + degrees / 360.0), 0.002) << p;
                effect.play(2000, steady(0));
            }
        }
    EXPECT_NE(Effect(64, "").engine.modulator.random_state,
              Effect(64, "").engine.modulator.random_state)
        << "seeded apart";
}

// The tank's loop takes 0.726 s in the mean, four times the decay on its way: 80 log10(decay) dB.
// The highs go faster: they are damped.
TEST(Laws, ThePlateRingsAsItsDecaySaysAndDarkens) {
    for (const double decay : {0.7, 0.8, 0.9, 1.0}) {
        SCOPED_TRACE(decay);
        Effect effect(44100, "delay 0.001, reverb 1, reverb_decay " + std::to_string(decay));
        const auto out = effect.play(4 * 44100, impulse(0.5f, 0.5f));
        double low = 0, power[2][2] = {};  // [turn][of the highs]
        for (std::size_t n = 0; n < out.size(); ++n) {
            const double t = static_cast<double>(n) / 44100, x = out[n].left;
            low += 0.1 * (x - low);  // 750 Hz
            const double turn = std::floor((t - 0.5) / 0.726);
            if (turn != 0 && turn != 1) continue;
            power[static_cast<int>(turn)][0] += low * low;
            power[static_cast<int>(turn)][1] += (x - low) * (x - low);
        }
        const auto fall = [&](int highs) {
            return 10 * std::log10(power[1][highs] / power[0][highs]);
        };
        EXPECT_NEAR(fall(0), 80 * std::log10(decay), 0.7);
        EXPECT_NEAR(fall(1) - fall(0), -1.8, 0.3);
    }
}

// Of a ramp in time the wet signal is the ramp as it was then: the delay read can be told from it.
TEST(Laws, TheDelaysReadAreHowOldTheSoundIs) {
    constexpr float rate = 8000, rise = 1e-2f / 16000;
    const Input ramp = [](int n) {
        return Frame{rise * static_cast<float>(n), rise * static_cast<float>(n)};
    };
    for (const std::string settings :
         {"repitch 0", "repitch 1", "repitch 0, mod_delay 0.2", "repitch 1, mod_delay 0.2"}) {
        SCOPED_TRACE(settings);
        Effect effect(rate, "delay 0.1 0.35, mod_freq 3, " + settings);
        double furthest = 0;
        for (int n = 0; n < 16000; ++n) {
            if (n == 8000) effect.set("delay 0.3 0.05");
            const Frame out = effect.engine.process(ramp(n));
            if (n < 4000) continue;
            double seconds[2] = {};
            for (const auto& read : effect.engine.delays_read())
                for (int side = 0; side < 2; ++side)
                    seconds[side] += double{read.weight} * double{read.seconds[side]};
            const double left = (n - double{out.left} / rise) / rate;
            // Half a step of a fade besides what the saturator and rounding do.
            ASSERT_NEAR(seconds[0], left, 1.5e-3) << n;
            ASSERT_NEAR(seconds[1], (n - double{out.right} / rise) / rate, 2e-3) << n;
            furthest = std::max(furthest, std::abs(left - 0.1));
        }
        EXPECT_GT(furthest, 0.17);
    }
}

TEST(Laws, EntriesOfWildSpeedsAreNotNegative) {
    for (const std::string mode : {"repitch 0", "repitch 1"}) {
        Effect fast(8000, "mod_delay 200, mod_waveform 4, " + mode);
        fast.play(1000, steady(0.5f));
        const auto& totals = fast.engine.entry_rings.left;
        EXPECT_GE(static_cast<std::int64_t>(totals.at(0) - totals.at(1)), 0);
    }
}

}  // namespace
