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
    std::array<std::vector<float>, 4> wobble;
    std::unique_ptr<Vesk> engine = std::make_unique<Vesk>(48000.0f);
    std::unique_ptr<SampleTableSet> tables;

    explicit Rig(float table_rate = 48000.0f) {
        TestNoise random(3);
        for (std::size_t i = 0; i < 5; ++i)
            for (std::size_t k = 0; k < 10 + i; ++k) noise[i].push_back(random.next());
        for (auto& table : wobble) table = {0.5f};
        wobble[3] = {};
        tables = std::make_unique<SampleTableSet>(*engine, table_rate, noise, wobble);
    }
};

TEST(SampleBank, PlaysEachSampleExactlyAndRoundTheSeam) {
    Rig rig;
    auto& bank = rig.engine->noise_bank;
    for (int n = 0; n < 100; ++n)
        ASSERT_EQ(bank.next(), rig.noise[0][static_cast<std::size_t>(n % 10)]);
    EXPECT_EQ(bank.players[0].position, 0.0);
    EXPECT_EQ(bank.players[1].position, static_cast<double>(100 % 11));
    EXPECT_EQ(bank.players[2].position, 0.0) << "who does not sound stands still";
    bank.rewind();
    EXPECT_EQ(bank.next(), rig.noise[0][0]);
    EXPECT_EQ(rig.engine->wobble_bank.next(), 0.5f) << "a table of one sample";
    rig.engine->wobble_bank.set_morph(1.0f);
    EXPECT_NEAR(rig.engine->wobble_bank.next(), 0.0f, 1e-7f) << "an empty source is one zero";
}

TEST(SampleBank, ReadsBetweenSamplesWhereRatesDiffer) {
    Rig rig(24000.0f);  // half speed: every second output lies half-way
    auto& bank = rig.engine->noise_bank;
    const auto& x = rig.noise[0];
    for (std::size_t n = 0; n < 40; ++n) {
        const float got = bank.next();
        const std::size_t i = n / 2 % 10;
        const auto at = [&](std::size_t k) { return static_cast<double>(x[(i + k) % 10]); };
        if (n % 2 == 0)
            ASSERT_EQ(got, x[i]);
        else  // the cubic's weights half-way
            ASSERT_NEAR(got, (-at(9) + 9 * at(0) + 9 * at(1) - at(2)) / 16, 1e-6);
    }
}

TEST(SampleBank, TheMorphPassesAllTablesAtEqualPower) {
    Vesk engine(48000.0f);
    struct {
        float position;
        std::uint64_t index;
        float a, b;
    } const rows[] = {
        {0.0f, 0, 1, 0}, {0.125f, 0, 0.70710677f, 0.70710677f}, {0.25f, 1, 1, 0},
        {0.5f, 2, 1, 0}, {0.875f, 3, 0.70710677f, 0.70710677f}, {1.0f, 3, 0, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.position);
        engine.noise_bank.set_morph(row.position);
        EXPECT_EQ(engine.noise_bank.index, row.index);
        EXPECT_NEAR(engine.noise_bank.gain_a, row.a, 1e-6f);
        EXPECT_NEAR(engine.noise_bank.gain_b, row.b, 1e-6f);
    }
    engine.wobble_bank.set_morph(1.0f);
    EXPECT_EQ(engine.wobble_bank.index, 2U);
}

}  // namespace
}  // namespace orvane::blocks::vesk
