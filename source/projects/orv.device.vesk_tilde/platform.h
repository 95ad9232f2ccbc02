// The seams to a platform without threads or without exceptions.
#pragma once

#include <string>

#if !defined(_LIBCPP_HAS_NO_THREADS)
#include <thread>
#endif
#if defined(__cpp_exceptions)
#include <stdexcept>
#else
#include <cstdlib>
#endif

namespace kv7::orv {

// Lets other threads run while this one waits for them; without threads nothing has to be waited
// for.
inline void give_way() noexcept {
#if !defined(_LIBCPP_HAS_NO_THREADS)
    std::this_thread::yield();
#endif
}

// Throws std::invalid_argument. Without exceptions the program ends: there callers ask first.
[[noreturn]] inline void refuse_argument(const std::string& why) {
#if defined(__cpp_exceptions)
    throw std::invalid_argument(why);
#else
    static_cast<void>(why);
    std::abort();
#endif
}

}  // namespace kv7::orv
