// Processors of which all that the program is built for can run the same instructions: aarch64 for
// one, where fused multiply-add is always there.
#include "engine/kernels.h"

namespace orvane::blocks::vesk {

extern const Kernel portable_kernel;

std::span<const Kernel* const> usable_kernels() noexcept {
    static constexpr const Kernel* all[] = {&portable_kernel};
    return all;
}

}  // namespace orvane::blocks::vesk
