// Keeps exceptions inside the object: whatever the host calls runs in here.
#pragma once

#include <exception>
#include <utility>

#include "framework/host_interface.h"

namespace kv7::ply {

// Runs function. An exception ends here: its text goes to the host's error channel and the result
// is fallback.
template <class Result, class Function>
Result guarded(Result fallback, Function&& function) noexcept {
    try {
        return std::forward<Function>(function)();
    } catch (const std::exception& failure) {
        object_error(nullptr, "%s", failure.what());
    } catch (...) {
        object_error(nullptr, "an exception of no standard type");
    }
    return fallback;
}

template <class Function>
void guarded(Function&& function) noexcept {
    guarded(0, [&function] {
        std::forward<Function>(function)();
        return 0;
    });
}

}  // namespace kv7::ply
