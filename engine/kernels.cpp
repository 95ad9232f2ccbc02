#include "engine/kernels.h"

namespace orvane::blocks::vesk {
namespace {

// A copy of the functions, so that a call needs one load. Null until this file's initialiser has
// run, which no engine precedes.
constinit Kernel current = {nullptr, nullptr, nullptr};

[[maybe_unused]] const bool chosen = [] {
    current = processor_has_fma() ? fma_kernel : portable_kernel;
    return true;
}();

}  // namespace

bool processor_has_fma() noexcept {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
           __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
}

const Kernel& kernel_in_use() noexcept {
    return current;
}

void use_kernel(const Kernel& kernel) noexcept {
    current = kernel;
}

}  // namespace orvane::blocks::vesk
