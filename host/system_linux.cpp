#include "host/system.h"

#include <dlfcn.h>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

extern "C" {
__attribute__((weak)) void rt_enter();
__attribute__((weak)) void rt_leave();
}

namespace tesk::system {

void* open_object(const std::string& path, std::string& error) {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) error = dlerror();
    return handle;
}

void* find_in(void* object_file, const char* name) {
    return dlsym(object_file, name);
}

void flush_denormals(bool flush) {
#if defined(__SSE__)
    constexpr unsigned int results_and_operands = 0x8040;
    const unsigned int word = _mm_getcsr();
    _mm_setcsr(flush ? word | results_and_operands : word & ~results_and_operands);
#else
    static_cast<void>(flush);
#endif
}

void enter_realtime() noexcept {
    if (rt_enter != nullptr) rt_enter();
}

void leave_realtime() noexcept {
    if (rt_leave != nullptr) rt_leave();
}

}  // namespace tesk::system
