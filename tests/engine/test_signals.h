// Signals and comparisons that the engine's tests share.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "engine/vesk.h"

namespace orvane::blocks::vesk {

// Uniform from -1 up to 1, the same on every run.
class TestNoise {
public:
    explicit TestNoise(std::uint64_t seed) : state_(seed) {}
    std::uint64_t word() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return state_ >> 24;
    }
    double unit() { return static_cast<double>(word() & 0xFFFFFFFF) / 4294967296.0; }
    float next() { return static_cast<float>(unit() * 2.0 - 1.0); }
    Frame frame() {
        const float left = next();
        return {left, next()};
    }

private:
    std::uint64_t state_;
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
