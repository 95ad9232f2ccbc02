// The plain callbacks that carry the host's calls to an object's messages.
#pragma once

#include "framework/messages.h"

namespace kv7::ply {

// What the host shows of a message of the mouse; exists during the call only.
struct mouse_event {
    void* object;  // the host instance
    void* box;     // the same: the object is its own box
    void* view;
    void* graphics;            // context of the view
    tesk_rectangle rectangle;  // of the box in the view
    std::int32_t type = 0;
    double x, y;
    std::uint32_t modifiers;
    std::int32_t pointer = 1;
};

// The same for one finger.
struct touch_event {
    void* object;
    void* box;
    void* view;
    void* graphics;
    tesk_rectangle rectangle;
    tesk_touch touch;
};

// Registers one message; "dspsetup" and "teskclass_setup" get no method.
void register_message(tesk_class* of_class, const message_base& message,
                      const object_base& prototype);

}  // namespace kv7::ply
