// The object orv.device.vesk~: this file gives it its name and its entry.
//
//   vesk_tilde          attributes, messages, ports
//   dsp_wrapper         any engine as a signal object of the host
//   device_attributes   what the host sees of a value, joined with the value's road
//   driver_core         ramps, queue, rebuild, audio loop
//   setters             what each value does to the engine
//   attribute_table     names, texts, defaults, ranges
#include "framework/class_registration.h"
#include "vesk_tilde.h"

extern "C" KV7_EXPORT void ext_main(void* resources);

extern "C" void ext_main(void*) {
    kv7::ply::register_class<vesk_tilde>(__FILE__);
}
