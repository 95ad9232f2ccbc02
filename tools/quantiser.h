// Turns samples into integers: clipped at full scale, rounded to the nearest step, with triangular
// dither if wanted. Dither is white noise of up to one step to either side; it makes the error of
// rounding independent of the signal.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace program {

class quantiser {
public:
    quantiser(int bits, bool dithered)  // 2 to 24
        : dithered_(dithered), full_scale_(std::ldexp(1.0f, bits - 1)), step_(1 << (32 - bits)) {}

    // In the upper bits of 32; valid until the next call.
    const int* quantise(const float* samples, std::size_t count) {
        quantised_.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const float noise = dithered_ ? uniform() - uniform() : 0.0f;
            const float rounded = std::nearbyint(samples[i] * full_scale_ + noise);
            quantised_[i] =
                static_cast<int>(std::clamp(rounded, -full_scale_, full_scale_ - 1)) * step_;
        }
        return quantised_.data();
    }

private:
    // 0 to 1, from the upper bits of a linear congruential generator (Knuth's MMIX). The same for
    // every file, so that equal commands give equal bytes.
    float uniform() {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<float>(state_ >> 40) * (1.0f / 16777216);
    }

    bool dithered_;
    float full_scale_;  // steps
    int step_;          // of the result
    std::uint64_t state_ = 1;
    std::vector<int> quantised_;
};

}  // namespace program
