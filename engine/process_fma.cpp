// The per-sample work for processors with AVX2 and fused multiply-add; see the compile options.
#define VESK_KERNEL fma_kernel
#include "engine/process_kernel.inc"
