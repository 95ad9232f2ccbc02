// What a measuring program calls of one library: a stereo effect in three functions.
#pragma once

#define VESK_UNIT_EXPORT extern "C" __attribute__((visibility("default")))

VESK_UNIT_EXPORT void* unit_create(double sample_rate, int max_block);
VESK_UNIT_EXPORT void unit_process(void* unit, const float* in_l, const float* in_r, float* out_l,
                                   float* out_r, int frames);
VESK_UNIT_EXPORT void unit_destroy(void* unit);
