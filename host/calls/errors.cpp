// The error channel, and the version that objects test.
#include <cstdarg>
#include <cstdio>
#include <string>

#include "host/state.h"

extern "C" {

void object_error(void* object, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    char text[2048];
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    std::string line = text;
    if (object != nullptr)
        line = std::string(static_cast<tesk::host_object*>(object)->of_class->name->name) + ": " +
               line;
    tesk::state().error(line);
}

uint16_t teskversion(void) {
    return tesk::state().version.load();
}

}  // extern "C"
