#include "host/system.h"

#include <windows.h>
#include <xmmintrin.h>

#include <filesystem>
#include <system_error>

namespace tesk::system {

void* open_object(const std::string& path, std::string& error) {
    HMODULE const handle = LoadLibraryW(std::filesystem::path(path).c_str());
    if (handle == nullptr) {
        const auto code = static_cast<int>(GetLastError());
        error = "error " + std::to_string(code) + ", " + std::system_category().message(code);
    }
    return handle;
}

void* find_in(void* object_file, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(object_file), name));
}

void flush_denormals(bool flush) {
    constexpr unsigned int results_and_operands = 0x8040;
    const unsigned int word = _mm_getcsr();
    _mm_setcsr(flush ? word | results_and_operands : word & ~results_and_operands);
}

// No guard is preloaded here.
void enter_realtime() noexcept {}
void leave_realtime() noexcept {}

}  // namespace tesk::system
