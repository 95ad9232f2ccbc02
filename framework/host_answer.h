// Checks what the host answers where the object cannot go on without it.
#pragma once

#include <cstdint>
#include <string>

#include "framework/host_interface.h"

namespace kv7::ply {

// Throws std::runtime_error that names the host's call and what it was for.
[[noreturn]] void throw_refusal(const char* call, const std::string& about);

// error: as the call answered it, 0 when it succeeded.
inline void require_success(std::int64_t error, const char* call, const std::string& about) {
    if (error != 0) throw_refusal(call, about);
}

// The pointer that the call answered; never null.
template <class T>
T* require_pointer(T* answer, const char* call, const std::string& about) {
    if (answer == nullptr) throw_refusal(call, about);
    return answer;
}

// Registers a method of a class; type is a method_type. Throws when the host refuses it.
template <class Function>
void add_method(tesk_class* of_class, Function* method, const char* name, std::int32_t type) {
    require_success(class_addmethod(of_class, reinterpret_cast<tesk_method>(method), name, type, 0),
                    "class_addmethod", name);
}

}  // namespace kv7::ply
