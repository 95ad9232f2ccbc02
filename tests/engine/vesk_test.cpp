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

using kv7::orv::vesk::channel_mode;
using kv7::orv::vesk::dry_wet_mode;
using kv7::orv::vesk::location_mode;
constexpr float rate = 48000.0f;

std::unique_ptr<Vesk> plain(int left_samples, int right_samples) {
    auto engine = std::make_unique<Vesk>(rate);
    make_plain(*engine, static_cast<float>(left_samples) / rate,
               static_cast<float>(right_samples) / rate);
    return engine;
}

std::vector<Frame> impulse_response(Vesk& engine, Frame impulse, int frames) {
    std::vector<Frame> out;
    for (int n = 0; n < frames; ++n) out.push_back(engine.process(n == 0 ? impulse : Frame{}));
    return out;
}

TEST(Saturator, FollowsItsCurveAndIsNeverLouderThanItsInput) {
    struct {
        float in, out;
    } const rows[] = {{0.01f, 0.01f},   {-0.01f, -0.01f},   {0.1f, 0.0998f}, {-0.1f, -0.0998f},
                      {0.5f, 0.4775f},  {-0.5f, -0.4787f},  {1, 0.8488f},    {-1, -0.8525f},
                      {2, 1.2359f},     {-2, -1.2433f},     {8, 1.4354f},    {-8, -1.4449f},
                      {1e30f, 1.4358f}, {-1e30f, -1.4452f}, {0, 0}};
    for (const auto& [in, out] : rows) EXPECT_NEAR(saturate(both(in))[1], out, 6e-5f) << in;
    EXPECT_EQ(saturate(Pair{})[0], 0.0f);
    EXPECT_NEAR(saturator_rest, 0.0024984f, 1e-7f);
    for (float x = 1e-30f; x < 1e30f; x *= 1.01f) {
        const Pair y = saturate(Pair{x, -x});
        ASSERT_LE(std::abs(y[0]), x);
        ASSERT_LE(std::abs(y[1]), x);
    }
}

TEST(Vesk, RepeatsComeBackAtTheirTimesAndLevelsInEveryChannelMode) {
    const float s1 = saturate(both(0.01f))[0];
    auto stereo = plain(100, 150);
    stereo->feedback = 0.5f;
    auto out = impulse_response(*stereo, {0.01f, 0.02f}, 400);
    EXPECT_EQ(out[100].left, s1);
    EXPECT_EQ(out[100].right, 0.0f);
    EXPECT_NEAR(out[200].left, s1 * 0.5f, 1e-5f);
    EXPECT_NEAR(out[150].right, 0.02f, 1e-4f);
    EXPECT_NEAR(out[300].right, 0.01f, 1e-4f);

    auto pingpong = plain(100, 150);
    pingpong->channel_mode = channel_mode::pingpong;
    pingpong->feedback = 0.5f;
    out = impulse_response(*pingpong, {0.01f, 0.01f}, 700);
    const float summed = 0.02f * 0.70710677f;
    EXPECT_NEAR(out[100].left, summed, 1e-4f) << "the whole input goes to the left line";
    EXPECT_EQ(out[100].right, 0.0f);
    EXPECT_NEAR(out[250].right, summed, 1e-4f) << "unscaled into the right one";
    EXPECT_NEAR(out[350].left, summed * 0.25f, 1e-4f) << "a full journey costs the square";
    EXPECT_NEAR(out[500].right, summed * 0.25f, 1e-4f);

    auto mid_side = plain(100, 150);
    mid_side->channel_mode = channel_mode::midside;
    out = impulse_response(*mid_side, {0.01f, 0.0f}, 300);
    EXPECT_NEAR(out[100].left, 0.005f, 1e-5f) << "mid after the left delay";
    EXPECT_NEAR(out[100].right, 0.005f, 1e-5f);
    EXPECT_NEAR(out[150].left, 0.005f, 1e-5f) << "side after the right one";
    EXPECT_NEAR(out[150].right, -0.005f, 1e-5f);

    auto inverted = plain(100, 100);
    inverted->feedback = 0.5f;
    inverted->feedback_invert = true;
    out = impulse_response(*inverted, {0.01f, 0.01f}, 300);
    EXPECT_NEAR(out[200].left, -s1 * 0.5f, 1e-5f);
}

TEST(Vesk, TheInputReachesTheLinesBitForBitAndModeChangesClearNothing) {
    auto engine = plain(100, 100);
    TestNoise random(1);
    for (int n = 0; n < 1000; ++n) {
        const Frame x = random.frame();
        engine->process(x);
        ASSERT_EQ(engine->delay_left.at(0), x.left);
        ASSERT_EQ(engine->delay_right.at(0), x.right);
    }
    engine->channel_mode = channel_mode::midside;
    const Frame y = engine->process({});
    EXPECT_NE(y.left, 0.0f) << "what stands on the lines is read on in the new mode";
}

TEST(Vesk, TheLoopStaysBoundedWithFeedbackAboveOne) {
    for (const channel_mode mode :
         {channel_mode::stereo, channel_mode::pingpong, channel_mode::midside}) {
        auto engine = plain(50, 70);
        engine->channel_mode = mode;
        engine->feedback = 1.5f;
        float loudest = 0.0f;
        TestNoise random(2);
        for (int n = 0; n < 100000; ++n) {
            const Frame y = engine->process(n < 1000 ? random.frame() : Frame{});
            loudest = std::max({loudest, std::abs(y.left), std::abs(y.right)});
        }
        EXPECT_LT(loudest, 1.46f);
        EXPECT_GT(loudest, 0.5f);
    }
}

TEST(Vesk, GainsAndMixActWhereTheyShould) {
    auto engine = plain(10, 10);
    engine->set_dry_wet(0.25f);
    EXPECT_EQ(engine->dry_gain, 0.75f);
    engine->output_gain = 0.5f;
    engine->input_gain = 0.25f;
    auto out = impulse_response(*engine, {0.04f, 0.04f}, 20);
    EXPECT_FLOAT_EQ(out[0].left, 0.75f * 0.04f) << "the dry path takes neither gain";
    EXPECT_NEAR(out[10].left, 0.25f * 0.5f * 0.01f, 1e-6f);
    engine->clip_dry = true;
    engine->input_gain = 20.0f;
    out = impulse_response(*engine, {0.05f, 0.05f}, 1);
    EXPECT_NEAR(out[0].left, 0.75f * 0.8488f * 0.5f, 1e-4f) << "clipped, the dry path takes both";

    engine->set_dry_wet(dry_wet_mode::equal_loudness);
    struct {
        float position, dry, wet;
    } const rows[] = {{0, 1, 0}, {0.5f, 0.70711f, 0.70711f}, {1, 0, 1}};
    for (const auto& [position, dry, wet] : rows) {
        engine->set_dry_wet(position);
        EXPECT_NEAR(engine->dry_gain, dry, 2e-5f);
        EXPECT_NEAR(engine->wet_gain, wet, 2e-5f);
        if (position != 0.5f) {
            EXPECT_EQ(engine->dry_gain, dry) << "exact at the ends";
        }
    }
}

TEST(Vesk, WidthScalesTheSideOfTheWetSignal) {
    for (const float width : {0.0f, 1.0f, 2.0f}) {
        auto engine = plain(10, 10);
        engine->width = width;
        const auto out = impulse_response(*engine, {0.01f, 0.002f}, 12);
        EXPECT_NEAR(out[10].left - out[10].right, width * 0.008f, 1e-5f);
        EXPECT_NEAR(out[10].left + out[10].right, 0.012f, 1e-5f);
    }
}

TEST(Vesk, TheReverbStandsWhereItIsToldAndStillWhileItsAmountIsZero) {
    const int first_left = 480 + 429;  // predelay and first tap at 48 kHz
    for (const location_mode location :
         {location_mode::pre, location_mode::post, location_mode::feedback}) {
        SCOPED_TRACE(static_cast<int>(location));
        auto dry = plain(2000, 2000);
        auto wet = plain(2000, 2000);
        dry->feedback = wet->feedback = 0.5f;
        dry->reverb_location = wet->reverb_location = location;
        wet->reverb_amount = 0.5f;
        const auto without = impulse_response(*dry, {0.5f, 0.5f}, 8000);
        const auto with = impulse_response(*wet, {0.5f, 0.5f}, 8000);
        int first = 0;
        while (first < 8000 && same_bits(without[static_cast<std::size_t>(first)],
                                         with[static_cast<std::size_t>(first)]))
            ++first;
        EXPECT_EQ(first, 2000 + first_left) << "one delay, then the plate, in either order";
        EXPECT_EQ(dry->reverb.predelay.head, 0U) << "not stepped";
        bool on_the_line = false;  // of the loop, within the first repeat
        for (std::uint64_t k = 0; k < 6000; ++k)
            on_the_line |= dry->delay_left.at(k) != wet->delay_left.at(k);
        EXPECT_EQ(on_the_line, location != location_mode::post);
    }
}

TEST(Vesk, GateShutsTheLinesAndDuckerTheWetSignalByTheRawInput) {
    auto gated = plain(100, 100);
    gated->gate_on = true;
    gated->input_gain = 100.0f;  // not what the gate hears
    for (int n = 0; n < 500; ++n) {
        gated->process({0.2f, 0.2f});
        ASSERT_EQ(gated->delay_left.at(0), 0.0f);
    }
    auto ducked = plain(100, 100);
    ducked->duck_on = true;
    ducked->ducker.threshold_db = both(-60.0f);
    ducked->feedback = 1.0f;
    for (int n = 0; n < 48000; ++n) ducked->process({0.0f, 1.0f});
    EXPECT_NEAR(ducked->ducker.reduction_db[0], -48.0f, 0.01f) << "the louder side ducks both";
}

TEST(Vesk, NoiseAndWobbleReachBothChannelsOnlyWhileOn) {
    auto engine = plain(10, 10);
    std::array<std::vector<float>, 5> noise;
    std::array<std::vector<float>, 4> wobble;
    noise[0] = {0.5f, 0.25f};
    noise[1] = {0.0f};
    wobble[0] = {1.0f};
    const SampleTableSet tables(*engine, rate, noise, wobble);
    engine->noise_amount = 0.5f;
    engine->input_gain = 0.0f;
    engine->process({1.0f, 1.0f});
    EXPECT_EQ(engine->delay_left.at(0), 0.0f);
    engine->noise_on = true;
    engine->process({});
    engine->process({});
    EXPECT_EQ(engine->delay_left.at(1), 0.25f);
    EXPECT_EQ(engine->delay_right.at(0), 0.125f);
    EXPECT_EQ(engine->crossfade_heads[0].rate_left.at(0), 4294967296);
    engine->wobble_on = true;
    engine->wobble_amount = 1.0f;
    engine->process({});
    EXPECT_EQ(engine->crossfade_heads[0].rate_left.at(0), 2 * 4294967296) << "one octave up";
    engine->wobble_on = false;
    engine->mod_delay = 1.0f;
    engine->mod_mult = true;
    engine->modulator.smoothing_coefficient = 1.0f;
    engine->modulator.waveform = kv7::orv::vesk::waveform_mode::square;
    engine->modulator.reset();
    engine->process({});
    EXPECT_EQ(engine->crossfade_heads[0].rate_right.at(0), 8 * 4294967296) << "three octaves";
}

TEST(Vesk, ResetSoundsLikeAFreshEngineAndClearKeepsTheHeads) {
    const auto prepare = [](Vesk& e, const std::array<std::uint32_t, 2>& seed) {
        e.delay_time = Pair{0.01f, 0.02f};
        e.set_repitch(false);
        e.reverb_amount = 0.3f;
        e.mod_delay = 0.4f;
        e.modulator.waveform = kv7::orv::vesk::waveform_mode::random;
        e.gate_on = e.duck_on = e.noise_on = e.wobble_on = true;
        e.noise_amount = e.wobble_amount = 0.1f;
        e.modulator.random_state = seed;
        e.engine_reset();
    };
    Vesk used(rate), fresh(rate);
    const SampleTableSet used_tables(used, rate), fresh_tables(fresh, rate);
    prepare(used, {5, 6});
    TestNoise random(4);
    for (int n = 0; n < 30001; ++n) used.process(random.frame());  // ends on the other head
    prepare(used, {1, 2});
    prepare(fresh, {1, 2});
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
}

TEST(Vesk, SilenceStaysSilentInAFreshEngine) {
    Vesk engine(rate);
    for (int n = 0; n < 50000; ++n) {
        const Frame y = engine.process({});
        ASSERT_EQ(y.left, 0.0f);
        ASSERT_EQ(y.right, 0.0f);
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
