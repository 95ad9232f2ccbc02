// The kernel for processors with fused multiply-add gives the bits of the one for any processor.
#include "engine/kernels.h"

#include <gtest/gtest.h>

#include <memory>

#include "engine/sample_banks.h"
#include "test_signals.h"

namespace orvane::blocks::vesk {
namespace {

// Modes, locations, speeds and amounts at random; equal dice make equal moves.
void move(TestNoise dice, Vesk& e) {
    using namespace kv7::orv::vesk;
    e.set_repitch(dice.below(2) == 0);
    e.channel_mode = channel_mode{dice.below(3)};
    e.modulator.waveform = waveform_mode{dice.below(6)};
    e.modulator.envelope_mix = static_cast<float>(dice.unit());
    e.reverb_location = location_mode{dice.below(3)};
    e.delay_time[0] = static_cast<float>(dice.unit()) * 0.05f;
    e.delay_time[1] = static_cast<float>(dice.unit()) * 0.3f;
    e.mod_delay = dice.next();
    e.reverb_amount = std::max(dice.next(), 0.0f);
    e.feedback = 0.6f + 0.6f * dice.next();
    e.noise_amount = dice.next();
    e.noise_on = e.noise_amount > 0;
    e.wobble_on = dice.below(2) == 0;
    e.wobble_amount = 0.3f;
    e.gate_on = dice.below(2) == 0;
    e.duck_on = dice.below(2) == 0;
    e.ducker.threshold_db = broadcast<Pair>(-30.0f);
    e.clip_dry = dice.below(2) == 0;
    e.width = 1.3f;
}

TEST(Kernels, FusedInHardwareAndInSoftwareGiveTheSameBits) {
    if (!processor_has_fma()) GTEST_SKIP() << "this processor has no fused multiply-add";
    for (const float rate : {44100.0f, 96000.0f}) {
        const auto a = std::make_unique<Vesk>(rate), b = std::make_unique<Vesk>(rate);
        const SampleTableSet tables_a(*a, rate), tables_b(*b, rate);
        b->modulator.random_state = a->modulator.random_state;
        a->engine_reset();
        b->engine_reset();
        TestNoise random(7);
        for (int n = 0; n < 600000; ++n) {
            if (n % 3000 == 0)
                for (Vesk* e : {a.get(), b.get()}) move(random, *e);
            const Pair x = to_pair(random.frame()) * (n % 40000 < 30000 ? 0.7f : 0.0f);
            const Frame ya = to_frame(portable_kernel.frame(*a, x));
            const Frame yb = to_frame(fma_kernel.frame(*b, x));
            ASSERT_TRUE(same_bits(ya, yb)) << "frame " << n << ": " << ya.left << " " << yb.left;
        }
    }
}

// Also with delays so short that a run goes in pieces, and at a rate where the plate's lines do.
TEST(Kernels, AVectorEqualsItsFramesOneByOneAlsoInPlace) {
    for (int samples = 1; samples < 40; ++samples) {
        SCOPED_TRACE(samples);
        const float rate = samples % 3 == 0 ? 2000.0f : 48000.0f;
        const auto a = std::make_unique<Vesk>(rate), b = std::make_unique<Vesk>(rate);
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
            std::vector<double> left, right, expected_left, expected_right;
            for (std::size_t i = 0; i < frames; ++i) {
                const Frame x = random.frame(), y = a->process(x);
                left.push_back(x.left);
                right.push_back(x.right);
                expected_left.push_back(y.left);
                expected_right.push_back(y.right);
            }
            b->process(left.data(), right.data(), left.data(), right.data(), frames);
            ASSERT_EQ(left, expected_left);
            ASSERT_EQ(right, expected_right);
        }
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
