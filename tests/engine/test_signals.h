// Signals and comparisons that the engine's tests share.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "dice.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {

class TestNoise : public Dice {
public:
    using Dice::Dice;
    float next() { return static_cast<float>(swing()); }
    Frame frame() {
        const float left = next();
        return {left, next()};
    }
};

inline bool same_bits(Frame a, Frame b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

}  // namespace orvane::blocks::vesk
