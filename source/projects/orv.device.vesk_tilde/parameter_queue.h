// Carries changes of toggles, choices and lists from the main thread to the audio thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "attribute_row.h"
#include "framework/message_queue.h"

namespace kv7::orv {

// The values that a setter reads, stored in place: a list in the queue allocates nothing.
class short_list {
public:
    short_list() = default;
    explicit short_list(std::span<const double> values) noexcept
        : count_(std::min(values.size(), elements_.size())) {
        std::copy_n(values.begin(), count_, elements_.begin());
    }
    std::span<const double> values() const noexcept { return {elements_.data(), count_}; }

private:
    std::array<double, list_length> elements_{};
    std::size_t count_ = 0;
};

// One change: the row holds the setter, which runs on the engine of the moment when the change is
// applied. A replaced engine thus needs no new binding, and queued changes stay valid.
struct queued_change {
    const attribute_row* row = nullptr;
    short_list value;
};

class parameter_queue {
public:
    // Main thread. False, and the change is lost, when 511 are queued already.
    bool post_change(const attribute_row& row, const short_list& value) {
        return queue_.enqueue({&row, value});
    }

    // Audio thread, once a vector, or a rebuild that excludes it: applies the changes in the order
    // in which they were made, at most as many as the queue holds, so that a busy producer cannot
    // hold the vector up.
    template <class Engine>
    void apply_queued_changes(Engine& engine) {
        queued_change change;
        for (int i = 0; i < capacity && queue_.dequeue(change); ++i)
            apply_value(engine, *change.row, change.value.values());
    }

private:
    static constexpr std::size_t requested_size = 256;
    static constexpr int capacity = 511;  // of a queue of that size

    ply::message_queue<queued_change> queue_{requested_size};
};

}  // namespace kv7::orv
