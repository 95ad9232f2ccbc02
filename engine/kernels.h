// The kernels: the audio processing, compiled for one or several kinds of the processor that the
// program is built for. All give the same bits.
#pragma once

#include <cstddef>
#include <span>

#include "engine/lanes.h"
#include "engine/ramp.h"

namespace orvane::blocks::vesk {

struct Vesk;

struct Kernel {
    const char* name;
    Pair (*frame)(Vesk& engine, Pair x) noexcept;  // one frame
    void (*frames)(Vesk& engine, const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames) noexcept;
    void (*ramped)(Vesk& engine, const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames, std::span<const Ramp> ramps) noexcept;
};

// Those that this processor can run, the fastest first; at least one.
std::span<const Kernel* const> usable_kernels() noexcept;

// The first one, chosen when the program loads. Tests may choose another while no engine runs.
const Kernel& kernel_in_use() noexcept;
void use_kernel(const Kernel& kernel) noexcept;

}  // namespace orvane::blocks::vesk
