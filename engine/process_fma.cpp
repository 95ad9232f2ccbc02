// The kernel for processors with AVX2 and fused multiply-add; CMakeLists.txt gives the options.
#define VESK_KERNEL fma_kernel
#define VESK_KERNEL_NAME "fma"
#include "engine/process_kernel.inc"
