// Mutual exclusion of a rebuild and the audio thread's vectors, in which only the rebuild waits.
#pragma once

#include <atomic>

#include "platform.h"

namespace kv7::orv {

class vector_gate {
public:
    // Audio thread: false while a rebuild is inside, else true, and leave() must follow.
    bool try_enter() noexcept {
        int expected = open;
        // Acquires what a rebuild swapped before it opened the gate.
        return state_.compare_exchange_strong(expected, vector_inside, std::memory_order_acquire,
                                              std::memory_order_relaxed);
    }
    void leave() noexcept {
        // Publishes what the vector, or the rebuild, wrote.
        state_.store(open, std::memory_order_release);
    }

    // Main thread: during its lifetime no vector is inside. The constructor waits for one that is.
    class exclusion {
    public:
        explicit exclusion(vector_gate& gate) noexcept : gate_(gate) {
            int expected = open;
            while (!gate_.state_.compare_exchange_weak(
                expected, rebuild_inside, std::memory_order_acquire, std::memory_order_relaxed)) {
                expected = open;
                give_way();
            }
        }
        ~exclusion() { gate_.leave(); }
        exclusion(const exclusion&) = delete;
        exclusion& operator=(const exclusion&) = delete;

    private:
        vector_gate& gate_;
    };

private:
    static constexpr int open = 0;
    static constexpr int vector_inside = 1;
    static constexpr int rebuild_inside = 2;

    std::atomic<int> state_{open};
};

}  // namespace kv7::orv
