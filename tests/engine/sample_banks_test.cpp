// Players and banks: the seam of a loop, reading between samples, the morph, and who runs.
#include "engine/sample_banks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "test_signals.h"

namespace orvane::blocks::vesk {
namespace {

struct Rig {
    std::array<std::vector<float>, 5> noise;
    Vesk engine{48000.0f};
    std::unique_ptr<SampleTableSet> tables;

    explicit Rig(float table_rate) {
        TestNoise random(3);
        for (std::size_t i = 0; i < 5; ++i)
            for (std::size_t k = 0; k < 10 + i; ++k) noise[i].push_back(random.next());
        tables = std::make_unique<SampleTableSet>(
            engine, table_rate, noise,
            std::array<std::vector<float>, 4>{{{0.5f}, {0.5f}, {0.5f}, {}}});
    }
};

TEST(SampleBank, PlaysEachSampleExactlyAndRoundTheSeam) {
    Rig rig(48000.0f);
    auto& bank = rig.engine.noise_bank;
    for (std::size_t n = 0; n < 105; ++n) ASSERT_EQ(bank.next(), rig.noise[0][n % 10]);
    EXPECT_EQ(bank.players[1].position, 105 % 11) << "inaudible, but of the pair";
    EXPECT_EQ(bank.players[2].position, 0.0) << "who does not sound stands still";
    bank.set_morph(1.0f);
    bank.rewind();
    EXPECT_EQ(bank.players[1].position, 0.0) << "all are rewound, sounding or not";
    bank.set_morph(0.0f);
    EXPECT_EQ(bank.next(), rig.noise[0][0]);
    EXPECT_EQ(rig.engine.wobble_bank.next(), 0.5f) << "a table of one sample";
    rig.engine.wobble_bank.set_morph(1.0f);
    EXPECT_NEAR(rig.engine.wobble_bank.next(), 0.0f, 1e-7f) << "an empty source is one zero";
}

TEST(SampleBank, ReadsBetweenSamplesWhereRatesDiffer) {
    Rig rig(24000.0f);  // half speed: every second output lies half-way
    const auto& x = rig.noise[0];
    for (std::size_t n = 0; n < 40; ++n) {
        const float got = rig.engine.noise_bank.next();
        const auto at = [&](std::size_t k) { return x[(n / 2 + k) % 10]; };
        const float half_way = (9 * at(0) + 9 * at(1) - at(9) - at(2)) / 16;  // the cubic's weights
        ASSERT_NEAR(got, n % 2 == 0 ? at(0) : half_way, 1e-6f);
    }
}

TEST(SampleBank, TheMorphPassesAllTablesAtEqualPower) {
    Vesk engine(48000.0f);
    auto& bank = engine.noise_bank;
    struct {
        float position;
        std::uint64_t index;
        float a, b;
    } const rows[] = {{0, 0, 1, 0},    {0.125f, 0, 0.7071f, 0.7071f}, {0.25f, 1, 1, 0},
                      {0.5f, 2, 1, 0}, {0.875f, 3, 0.7071f, 0.7071f}, {1, 3, 0, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.position);
        bank.set_morph(row.position);
        EXPECT_EQ(bank.index, row.index);
        EXPECT_NEAR(bank.gain_a, row.a, 1e-5f);
        EXPECT_NEAR(bank.gain_b, row.b, 1e-5f);
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
