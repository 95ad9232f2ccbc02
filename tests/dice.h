// Random choices, the same on every run.
#pragma once

#include <cstdint>

class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}
    std::uint64_t word() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return state_ >> 11;
    }
    double unit() { return static_cast<double>(word()) * 0x1p-53; }  // 0 up to 1
    double swing() { return 2.0 * unit() - 1.0; }                    // -1 up to 1
    int below(int n) { return static_cast<int>(unit() * n); }

private:
    std::uint64_t state_;
};
