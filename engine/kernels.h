// The per-sample work, compiled once for any processor and once for those with fused multiply-add.
#pragma once

#include <cstddef>

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

struct Vesk;

struct Kernel {
    Pair (*frame)(Vesk& engine, Pair x) noexcept;
    void (*frames)(Vesk& engine, const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames) noexcept;
};

// The same bits from both.
extern const Kernel portable_kernel;
extern const Kernel fma_kernel;

bool processor_has_fma() noexcept;  // all that fma_kernel was compiled for

// The kernel in use, chosen when the program loads. Tests may choose another while no engine runs.
const Kernel& kernel_in_use() noexcept;
void use_kernel(const Kernel& kernel) noexcept;

}  // namespace orvane::blocks::vesk
