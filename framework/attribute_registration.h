// Registers an attribute with the host class: its properties, its bounds, its preset methods.
#pragma once

#include <string>

#include "framework/attribute_base.h"

namespace kv7::ply {

// Properties that the host refused. A class is registered without them, with one line at the end.
struct refused_properties {
    int count = 0;
    std::string first;  // "ATTRIBUTE PROPERTY"

    void report(const std::string& class_name) const;  // nothing where nothing was refused
};

// Throws std::runtime_error when the host refuses the attribute itself.
void register_attribute(tesk_class* of_class, attribute_base& attribute,
                        refused_properties& refused);

// The methods of a class that has an attribute "value"; given to the host.
void preset_callback(void* instance);

}  // namespace kv7::ply
