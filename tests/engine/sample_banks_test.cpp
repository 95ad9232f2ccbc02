// What the built-in tables never do: other rates than the engine's, tables of one sample or none.
#include "engine/sample_banks.h"

#include <gtest/gtest.h>

#include "engine/vesk.h"

namespace orvane::blocks::vesk {
namespace {

TEST(SampleBank, ReadsBetweenSamplesAndRoundTheSeamOfTablesOfAnyLength) {
    Vesk engine(48000.0f);
    const std::vector<float> x{0.5f, -0.25f, 1.0f, 0.75f, -0.5f, 0.125f, 0.0f};
    const SampleTableSet tables(engine, 24000.0f, {{x, {0.5f}, {}, {}, {}}}, {});
    for (std::size_t n = 0; n < 40; ++n) {  // every second value lies half-way
        const auto at = [&](std::size_t k) { return x[(n / 2 + k) % x.size()]; };
        const float half_way =
            (9 * at(0) + 9 * at(1) - at(x.size() - 1) - at(2)) / 16;  // the cubic's weights
        ASSERT_NEAR(engine.noise_bank.next(), n % 2 == 0 ? at(0) : half_way, 1e-6f) << n;
    }
    for (const auto& [morph, value] : {std::pair{0.25f, 0.5f}, {0.5f, 0.0f}}) {
        engine.noise_bank.set_morph(morph);
        for (int n = 0; n < 9; ++n) EXPECT_NEAR(engine.noise_bank.next(), value, 1e-6f) << morph;
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
