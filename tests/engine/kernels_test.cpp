// The kernel for processors with fused multiply-add gives the bits of the one for any processor.
#include "engine/kernels.h"

#include <gtest/gtest.h>

#include <memory>

#include "engine/sample_banks.h"
#include "test_signals.h"

namespace orvane::blocks::vesk {
namespace {

// Both engines through the same moves: modes, locations, speeds and amounts at random.
void move_both(TestNoise& random, Vesk& a, Vesk& b) {
    using namespace kv7::orv::vesk;
    const auto pick = [&](int n) {
        return static_cast<std::int32_t>(random.word() % static_cast<std::uint64_t>(n));
    };
    const bool repitch = pick(2) == 0;
    const auto mode = channel_mode{pick(3)};
    const auto waveform = waveform_mode{pick(6)};
    const auto location = location_mode{pick(3)};
    const Pair delay{static_cast<float>(random.unit()) * 0.05f,
                     static_cast<float>(random.unit()) * 0.3f};
    const float amounts[5] = {random.next(), random.next(), random.next(), random.next(),
                              random.next()};
    const bool flags[4] = {pick(2) == 0, pick(2) == 0, pick(2) == 0, pick(2) == 0};
    for (Vesk* e : {&a, &b}) {
        e->set_repitch(repitch);
        e->channel_mode = mode;
        e->modulator.waveform = waveform;
        e->modulator.envelope_mix = amounts[4] * 0.5f + 0.5f;
        e->reverb_location = location;
        e->delay_time = delay;
        e->mod_delay = amounts[0];
        e->reverb_amount = amounts[1] > 0 ? amounts[1] : 0.0f;
        e->feedback = 0.6f + 0.6f * amounts[2];
        e->noise_on = amounts[3] > 0;
        e->noise_amount = amounts[3];
        e->wobble_on = flags[0];
        e->wobble_amount = 0.3f;
        e->gate_on = flags[1];
        e->duck_on = flags[2];
        e->ducker.threshold_db = both(-30.0f);
        e->clip_dry = flags[3];
        e->width = 1.3f;
    }
}

TEST(Kernels, FusedInHardwareAndInSoftwareGiveTheSameBits) {
    if (!processor_has_fma()) GTEST_SKIP() << "this processor has no fused multiply-add";
    for (const float rate : {44100.0f, 96000.0f}) {
        const auto a = std::make_unique<Vesk>(rate);
        const auto b = std::make_unique<Vesk>(rate);
        const SampleTableSet tables_a(*a, rate), tables_b(*b, rate);
        b->modulator.random_state = a->modulator.random_state;
        a->engine_reset();
        b->engine_reset();
        TestNoise random(7);
        for (int n = 0; n < 600000; ++n) {
            if (n % 3000 == 0) move_both(random, *a, *b);
            const Pair x = lanes(random.frame()) * (n % 40000 < 30000 ? 0.7f : 0.0f);
            const Frame ya = frame(portable_kernel.frame(*a, x));
            const Frame yb = frame(fma_kernel.frame(*b, x));
            ASSERT_TRUE(same_bits(ya, yb)) << "frame " << n << ": " << ya.left << " " << yb.left;
        }
    }
}

// Also with delays so short that a run goes in pieces, and at a rate where the plate's lines do.
TEST(Kernels, AVectorEqualsItsFramesOneByOneAlsoInPlace) {
    for (int samples = 1; samples < 40; ++samples) {
        SCOPED_TRACE(samples);
        const float rate = samples % 3 == 0 ? 2000.0f : 48000.0f;
        const auto a = std::make_unique<Vesk>(rate);
        const auto b = std::make_unique<Vesk>(rate);
        for (Vesk* e : {a.get(), b.get()}) {
            e->modulator.random_state = {1, 2};
            e->set_repitch(samples % 2 == 0);
            e->delay_time =
                Pair{static_cast<float>(samples), samples % 5 == 0 ? 900.0f : 31.0f} / rate;
            e->reverb_amount = 0.3f;
            e->reverb_location = kv7::orv::vesk::location_mode{samples % 3};
            e->gate_on = e->duck_on = true;
            e->mod_delay = 0.3f;
            e->engine_reset();
        }
        TestNoise random(8);
        for (int round = 0; round < 40; ++round) {
            const std::size_t frames = random.word() % 100;
            std::vector<double> left(frames), right(frames);
            std::vector<Frame> expected;
            for (std::size_t i = 0; i < frames; ++i) {
                const Frame x = random.frame();
                left[i] = static_cast<double>(x.left);
                right[i] = static_cast<double>(x.right);
                expected.push_back(a->process(x));
            }
            b->process(left.data(), right.data(), left.data(), right.data(), frames);
            for (std::size_t i = 0; i < frames; ++i) {
                ASSERT_EQ(left[i], static_cast<double>(expected[i].left));
                ASSERT_EQ(right[i], static_cast<double>(expected[i].right));
            }
        }
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
