// The signal's way through the engine: what reaches the lines, the loop and the output.
#include "engine/vesk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "engine/sample_banks.h"
#include "engine/saturator.h"
#include "test_signals.h"

namespace orvane::blocks::vesk {
namespace {

constexpr float rate = 48000.0f;

// A lone wet delay: no feedback, crossfade mode, the mix fully wet.
std::unique_ptr<Vesk> plain(float samples) {
    auto engine = std::make_unique<Vesk>(rate);
    engine->delay_time = broadcast<Pair>(samples / rate);
    engine->set_repitch(false);
    engine->reset_read_heads();
    engine->feedback = 0.0f;
    engine->set_dry_wet(1.0f);
    return engine;
}

TEST(Saturator, FollowsItsCurveAndIsNeverLouderThanItsInput) {
    for (const auto& [in, out] : {std::pair{0.01f, 0.01f},
                                  {0.5f, 0.4775f},
                                  {-0.5f, -0.4787f},
                                  {2.0f, 1.2359f},
                                  {-2.0f, -1.2433f},
                                  {1e30f, 1.4358f},
                                  {-1e30f, -1.4452f}})
        EXPECT_NEAR(saturate(broadcast<Pair>(in))[1], out, 6e-5f) << in;
    EXPECT_EQ(saturate(Pair{})[0], 0.0f);
    for (float x = 1e-30f; x < 1e30f; x *= 1.01f) {
        const Pair y = saturate(Pair{x, -x});
        ASSERT_LE(std::abs(y[0]), x);
        ASSERT_LE(std::abs(y[1]), x);
    }
}

TEST(Vesk, AnEquallyLoudMixIsExactAtItsEnds) {
    Vesk engine(rate);
    engine.set_dry_wet(kv7::orv::vesk::dry_wet_mode::equal_loudness);
    for (const float position : {0.0f, 1.0f}) {
        engine.set_dry_wet(position);
        EXPECT_EQ(engine.dry_gain, 1.0f - position);
        EXPECT_EQ(engine.wet_gain, position);
    }
    engine.set_dry_wet(0.5f);
    EXPECT_NEAR(engine.dry_gain, 0.70711f, 2e-5f);
    EXPECT_NEAR(engine.wet_gain, 0.70711f, 2e-5f);
}

TEST(Vesk, GateAndDuckerHearTheLouderSideOfTheRawInput) {
    auto engine = plain(100);
    engine->gate_on = engine->duck_on = true;
    engine->set_gate_threshold(0.0f);
    engine->input_gain = 100.0f;
    engine->ducker.threshold_db = broadcast<Pair>(-60.0f);
    for (int n = 0; n < 48000; ++n) {
        engine->process({0.0f, -1.0f});
        ASSERT_EQ(engine->delay_right.at(0), 0.0f) << "opens over its threshold only";
    }
    EXPECT_NEAR(engine->ducker.reduction_db[0], -48.0f, 0.01f);
    engine->process({0.0f, -1.0001f});
    EXPECT_NE(engine->delay_right.at(0), 0.0f);
}

TEST(Vesk, NoiseAndWobbleReachBothChannelsOnlyWhileOn) {
    auto engine = plain(10);
    const SampleTableSet tables(*engine, rate, {{{0.5f, 0.25f}, {0.0f}, {}, {}, {}}},
                                {{{1.0f}, {}, {}, {}}});
    const auto octaves = [&](const auto& entries) {
        engine->process({1.0f, 1.0f});
        return std::log2(static_cast<double>(entries.at(0)) / 4294967296.0);
    };
    const auto& head = engine->crossfade_heads[0];
    engine->noise_amount = 0.5f;
    engine->wobble_amount = 1.0f;
    engine->input_gain = 0.0f;
    EXPECT_EQ(octaves(head.rate_left), 0.0);
    EXPECT_EQ(engine->delay_left.at(0), 0.0f);
    engine->noise_on = engine->wobble_on = true;
    EXPECT_EQ(octaves(head.rate_left), 1.0);
    EXPECT_EQ(octaves(head.rate_right), 1.0);
    EXPECT_EQ(engine->delay_left.at(1), 0.25f);
    EXPECT_EQ(engine->delay_right.at(0), 0.125f);
    engine->wobble_on = false;
    engine->mod_delay = 1.0f;
    engine->mod_mult = true;
    engine->modulator.smoothing_coefficient = 1.0f;
    engine->modulator.waveform = kv7::orv::vesk::waveform_mode::square;
    engine->modulator.reset();
    EXPECT_EQ(octaves(head.rate_right), 3.0);
}

TEST(Vesk, ResetSoundsLikeAFreshEngineAndClearKeepsTheHeads) {
    Vesk used(rate), fresh(rate);
    const SampleTableSet used_tables(used, rate), fresh_tables(fresh, rate);
    TestNoise random(4);
    for (Vesk* e : {&used, &fresh}) {
        e->delay_time = Pair{0.01f, 0.02f};
        e->set_repitch(false);
        e->reverb_amount = 0.3f;
        e->mod_delay = 0.4f;
        e->modulator.waveform = kv7::orv::vesk::waveform_mode::random;
        e->gate_on = e->duck_on = e->noise_on = e->wobble_on = true;
        e->noise_amount = e->wobble_amount = 0.1f;
        for (int n = 0; n < 30001 && e == &used; ++n)  // ends on the other head
            used.process(random.frame());
        e->modulator.random_state = {1, 2};
        e->engine_reset();
    }
    for (int n = 0; n < 30000; ++n) {
        const Frame x = random.frame();
        ASSERT_TRUE(same_bits(used.process(x), fresh.process(x))) << n;
    }
    const auto cursor = used.crossfade_heads[0].cursor_left.offset;
    used.engine_clear();
    EXPECT_EQ(used.delay_filled, 4U);
    EXPECT_EQ(used.crossfade_heads[0].cursor_left.offset, cursor);
    EXPECT_NE(used.modulator.envelope[0], 0.0f);
    EXPECT_NE(used.noise_bank.players[0].position, 0.0);
    for (int n = 0; n < 20000; ++n)
        ASSERT_EQ(used.reverb.process(Pair{}).a[0], 0.0f) << "the plate is cleared too";
}

}  // namespace
}  // namespace orvane::blocks::vesk
