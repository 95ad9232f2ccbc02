// A function that the host runs once on the main thread however often it is set.
#pragma once

#include <string>

#include "framework/host_answer.h"

namespace kv7::ply {

// Cancelled by its destructor.
class qelem {
public:
    // about: for the text of the exception when the host gives none.
    qelem(void* argument, void (*function)(void* argument), const std::string& about)
        : handle_(require_pointer(qelem_new(argument, reinterpret_cast<tesk_method>(function)),
                                  "qelem_new", about)) {}
    ~qelem() { qelem_free(handle_); }
    qelem(const qelem&) = delete;
    qelem& operator=(const qelem&) = delete;

    void set() { qelem_set(handle_); }  // any thread

private:
    void* handle_;
};

}  // namespace kv7::ply
