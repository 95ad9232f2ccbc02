// The float sine of Debian's C library, from 0 to a quarter turn, with the same bits on every
// platform: those of other C libraries differ in the last place here and there.
#pragma once

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// x in radians from 0 to 1.5707964, the float next above pi/2. Polynomials in 64 bits for the sine
// below pi/4 and, of the rest up to pi/2, for the cosine; wrong by at most 0.56 units in the last
// place. The coefficients are those of Arm's optimized routines, which that library uses.
VESK_INLINE float exact_sine(float x) noexcept {
    constexpr double quarter_turn = 0x1.921FB54442D18p0;  // pi/2
    constexpr float linear_below = 0x1p-12f;
    constexpr float cosine_from = 0x1.921FB6p-1f;  // pi/4
    if (x < linear_below) return x;
    const double y =
        x < cosine_from ? static_cast<double>(x) : static_cast<double>(x) - quarter_turn;
    const double y2 = y * y;
    if (x < cosine_from) {
        const double y3 = y * y2;
        const double high = 0x1.1107605230bc4p-7 + y2 * -0x1.994eb3774cf24p-13;
        const double low = y + y3 * -0x1.555545995a603p-3;
        return static_cast<float>(low + (y3 * y2) * high);
    }
    const double y4 = y2 * y2;
    const double high = -0x1.6c087e89a359dp-10 + y2 * 0x1.99343027bf8c3p-16;
    const double low = (1.0 + y2 * -0x1.ffffffd0c621cp-2) + y4 * 0x1.55553e1068f19p-5;
    return static_cast<float>(low + (y4 * y2) * high);
}

}  // namespace orvane::blocks::vesk
