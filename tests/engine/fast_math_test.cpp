// The function kit against the exact functions, its exact points, and the fused step against
// arithmetic that is wide enough to be exact.
#include "engine/fast_math.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "dice.h"
#include "engine/kernels.h"

namespace orvane::blocks::vesk {
namespace {

TEST(FastMath, StaysWithinItsErrorOfTheExactFunctions) {
    struct {
        const char* name;
        double low, high, largest_error;
        bool relative;
        float (*fast)(float);
        double (*exact)(double);
    } const rows[] = {
        {"exp2", -20, 20, 1e-5, true, fast_exp2<float>, std::exp2},
        {"exp", -10, 10, 2e-5, true, fast_exp<float>, std::exp},
        {"pow10", -5, 5, 2e-5, true, fast_pow10<float>, [](double x) { return std::pow(10.0, x); }},
        {"db to gain", -60, 40, 2e-5, true, fast_db_to_gain<float>,
         [](double x) { return std::pow(10.0, x / 20); }},
        {"log2", 0.001, 100, 8.1e-6, false, fast_log2<float>, std::log2},
        {"log10", 0.001, 100, 3e-6, false, fast_log10<float>, std::log10},
        {"gain to db", 0.001, 100, 6e-5, false, fast_gain_to_db<float>,
         [](double x) { return 20 * std::log10(x); }},
        {"sine", -1.5707963, 1.5707963, 2e-6, false, fast_sine<float>, std::sin},
        {"sine of a quarter turn", 0, 1, 2e-6, false, fast_sine_unit,
         [](double x) { return std::sin(x * std::numbers::pi / 2); }},
        {"sine of a cycle", 0, 0.99999, 2e-6, false, fast_sine_cycle<float>,
         [](double x) { return std::sin(x * 2 * std::numbers::pi); }},
        {"tanh", -6, 6, 3.2e-6, false, fast_tanh<float>, std::tanh},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        double worst = 0.0;
        for (int i = 0; i <= 200000; ++i) {
            const auto x = static_cast<float>(row.low + (row.high - row.low) * i / 200000);
            const double exact = row.exact(static_cast<double>(x));
            const double error = std::abs(row.fast(x) - exact);
            worst = std::max(worst, row.relative ? error / std::abs(exact) : error);
        }
        EXPECT_LT(worst, row.largest_error);
    }
}

TEST(FastMath, IsExactWhereResultsJoin) {
    for (int x = -126; x <= 127; ++x)
        ASSERT_EQ(fast_exp2(static_cast<float>(x)), std::ldexp(1.0f, x)) << x;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float x : {-126.5f, -127.0f, -200.0f, -infinity, nan}) EXPECT_EQ(fast_exp2(x), 0.0f);
    for (const float x : {128.0f, 500.0f, infinity}) EXPECT_EQ(fast_exp2(x), infinity);
    for (const auto& [x, log] :
         {std::pair{1.0f, 0.0f}, {2.0f, 1.0f}, {0.5f, -1.0f}, {0.0f, -127.0f}})
        EXPECT_EQ(fast_log2(x), log);
    for (const auto& [x, tanh] : {std::pair{0.0f, 0.0f}, {50.0f, 1.0f}, {-infinity, -1.0f}})
        EXPECT_EQ(fast_tanh(x), tanh);
    EXPECT_NEAR(one_pole_coefficient(0.0f, 48000.0f), 1.0f, 1e-6f);
}

[[gnu::target("fma")]] float fused_in_hardware(float a, float b, float c) {
    return __builtin_fmaf(a, b, c);
}

// Random bit patterns, and triples whose 64-bit sum lies half-way between two floats, which random
// ones never meet.
TEST(Fused, RoundsOnceInSoftwareToo) {
    if (!processor_has_fma()) GTEST_SKIP() << "not every C library's own fmaf rounds once";
    Dice dice(1);
    const auto word = [&dice] { return static_cast<std::uint32_t>(dice.word() >> 21); };
    int half_way = 0;
    for (int i = 0; i < 3000000; ++i) {
        float a = std::bit_cast<float>(word());
        float b = std::bit_cast<float>(word());
        float c = std::bit_cast<float>(word());
        if (i % 3 == 1) {  // near one another
            a = 1.0f + static_cast<float>(word() >> 9) * 0x1p-23f;
            b = 1.0f + static_cast<float>(word() >> 9) * 0x1p-23f;
            c = std::ldexp(static_cast<float>(word() >> 8) - 0x1p23f,
                           -static_cast<int>(word() % 60));
        } else if (i % 3 == 2) {
            // A product of 25 bits, whose last is half of a float's last place.
            a = static_cast<float>((word() & 0xFFFFFF) | 1);
            b = std::ldexp(1.0f, static_cast<int>(word() % 3) - 26);
            c = std::ldexp(1.0f, static_cast<int>(word() % 4)) + (i % 2 ? 0x1p-149f : 0.0f);
        }
        const float once = fused_in_hardware(a, b, c);
        const float ours = fused_in_software(a, b, c);
        const double wide =
            static_cast<double>(a) * static_cast<double>(b) + static_cast<double>(c);
        if ((std::bit_cast<std::uint64_t>(wide) & 0x1FFFFFFF) == 0x10000000) ++half_way;
        ASSERT_TRUE(std::isnan(once)
                        ? std::isnan(ours)
                        : std::bit_cast<std::uint32_t>(once) == std::bit_cast<std::uint32_t>(ours))
            << std::hexfloat << a << " " << b << " " << c << ": " << once << " " << ours;
    }
    EXPECT_GT(half_way, 10000) << "the rare road was never taken";
}

}  // namespace
}  // namespace orvane::blocks::vesk
