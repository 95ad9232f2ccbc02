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

// A lone wet delay: no feedback, crossfade mode, the mix fully wet.
inline void make_plain(Vesk& engine, float left_seconds, float right_seconds) {
    engine.delay_time = Pair{left_seconds, right_seconds};
    engine.set_repitch(false);
    engine.reset_read_heads();
    engine.feedback = 0.0f;
    engine.set_dry_wet(1.0f);
}

}  // namespace orvane::blocks::vesk
