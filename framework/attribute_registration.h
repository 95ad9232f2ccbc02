// Registers an attribute with the host class: its properties, its bounds, its preset methods.
#pragma once

#include "framework/attribute_base.h"

namespace kv7::ply {

void register_attribute(tesk_class* of_class, attribute_base& attribute);

// The methods of a class that has an attribute "value"; given to the host.
void preset_callback(void* instance);

}  // namespace kv7::ply
