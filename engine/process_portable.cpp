// The per-sample work for any processor: fused steps in software.
#define VESK_KERNEL portable_kernel
#include "engine/process_kernel.inc"
