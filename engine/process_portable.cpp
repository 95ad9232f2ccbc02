// The kernel for any processor: fused multiply-adds in software.
#define VESK_KERNEL portable_kernel
#define VESK_KERNEL_NAME "portable"
#include "engine/process_kernel.inc"
