// The kernel for any processor: fused multiply-adds in software.
#define VESK_KERNEL portable_kernel
#include "engine/process_kernel.inc"
