// The two replacements of library calls: the fused step in software, with one rounding where the
// 64-bit sum would round a second time, and the exact sine.
#include "engine/fused.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/exact_sine.h"
#include "engine/fast_math.h"

namespace orvane::blocks::vesk {
namespace {

TEST(Fused, RoundsOnceInSoftwareToo) {
    // Products a little below and above a half of the sum's last place, by less than 64 bits hold:
    // (1 + 2^-23)(1 - 2^-23) = 1 - 2^-46, and 8392705 * 8384513 = 2^46 + 1.
    constexpr float above = 1 + 0x1p-23f, below = 1 - 0x1p-23f;
    const struct {
        float a, b, c, once;
    } rows[] = {
        {above, below * 0x1p-24f, above, above},
        {8392705 * 0x1p-46f, 8384513 * 0x1p-24f, 1, above},
        {above * 0x1p-75f, below * 0x1p-75f, 0x1p-127f + 0x1p-149f, 0x1p-127f + 0x1p-149f},
        {8392705 * 0x1p-98f, 8384513 * 0x1p-98f, 0x1p-127f, 0x1p-127f + 0x1p-149f},
        {3, 0x1p-25f, 1, 1 + 0x1p-23f},
        {1, 0x1p-24f, 1, 1},
        {0x1p127f, 2, -0x1p127f, 0x1p127f},
        {INFINITY, 1, 1, INFINITY},
    };
    for (const auto& [a, b, c, once] : rows)
        for (const float sign : {1.0f, -1.0f})
            EXPECT_EQ(fused_in_software(sign * a, b, sign * c), sign * once)
                << std::hexfloat << a << " " << b << " " << c;
    // In a vector a doubtful lane leaves the others as they are.
    for (const auto& [a, b, c, once] : rows)
        for (const int lane : {0, 3}) {
            Quad x = broadcast<Quad>(3), y = x, z = x;
            x[lane] = a, y[lane] = b, z[lane] = c;
            const Quad result = fused_in_software(x, y, z);
            for (int i = 0; i < 4; ++i) EXPECT_EQ(result[i], i == lane ? once : 12) << i;
        }
    EXPECT_TRUE(std::isnan(fused_in_software(INFINITY, 0, 1)));
}

#if defined(__GLIBC__)
TEST(ExactSine, HasTheBitsOfTheLibrary) {
    for (std::int32_t bits = 0; bits <= bits_of(half_pi); bits += 1009) {
        const auto x = from_bits<float>(bits);
        ASSERT_EQ(exact_sine(x), std::sin(x)) << std::hexfloat << x;
    }
    EXPECT_EQ(exact_sine(half_pi), std::sin(half_pi));
}
#endif

}  // namespace
}  // namespace orvane::blocks::vesk
