// The two kernels: the audio processing, compiled for any x86-64 processor and for those with AVX2
// and fused multiply-add. Both give the same bits.
#pragma once

#include <cstddef>
#include <span>

#include "engine/lanes.h"
#include "engine/ramp.h"

namespace orvane::blocks::vesk {

struct Vesk;

struct Kernel {
    Pair (*frame)(Vesk& engine, Pair x) noexcept;  // one frame
    void (*frames)(Vesk& engine, const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames) noexcept;
    void (*ramped)(Vesk& engine, const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames, std::span<const Ramp> ramps) noexcept;
};

extern const Kernel portable_kernel;
extern const Kernel fma_kernel;

bool processor_has_fma() noexcept;  // and the other extensions that fma_kernel is compiled for

// Chosen when the program loads. Tests may choose another while no engine runs.
const Kernel& kernel_in_use() noexcept;
void use_kernel(const Kernel& kernel) noexcept;

}  // namespace orvane::blocks::vesk
