#include "engine/kernels.h"

namespace orvane::blocks::vesk {
namespace {

// A copy of the functions, so that a call needs one load. Null until this file's initialiser has
// run, which no engine precedes.
constinit Kernel current = {};

[[maybe_unused]] const bool chosen = [] {
    current = *usable_kernels().front();
    return true;
}();

}  // namespace

const Kernel& kernel_in_use() noexcept {
    return current;
}

void use_kernel(const Kernel& kernel) noexcept {
    current = kernel;
}

}  // namespace orvane::blocks::vesk
