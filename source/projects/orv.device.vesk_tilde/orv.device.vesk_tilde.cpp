// The object orv.device.vesk~: this file gives it its name and its entry.
//
//   vesk_tilde          the effect's messages, ports and tables
//   dsp_wrapper         any engine as a signal object of the host
//   device_attributes   the host's atoms to numbers and back
//   driver_core         an attribute's way to the engine: ramp or queue; rebuild, audio loop
//   setters             what each value does to the engine
//   attribute_table     names, texts, defaults, ranges, setters
#include "framework/class_registration.h"
#include "vesk_tilde.h"

extern "C" KV7_EXPORT void ext_main(void* resources);

extern "C" void ext_main(void*) {
    kv7::ply::register_class<vesk_tilde>(__FILE__);
}
