// x86-64: processors with AVX2 and fused multiply-add, and all others.
#include "engine/kernels.h"

namespace orvane::blocks::vesk {

extern const Kernel fma_kernel;
extern const Kernel portable_kernel;

std::span<const Kernel* const> usable_kernels() noexcept {
    static constexpr const Kernel* all[] = {&fma_kernel, &portable_kernel};
    const bool runs_fma = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                          __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    return std::span(all).subspan(runs_fma ? 0 : 1);
}

}  // namespace orvane::blocks::vesk
