// Carries changes of toggles, choices and lists from the main thread to the audio thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <variant>

#include "attribute_table.h"
#include "framework/message_queue.h"

namespace kv7::orv {

// The elements of a list that a setter reads, held in place: a list in the queue allocates nothing.
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

// A setter and the owner of the engine it works on, which is looked up when the setter runs: a
// replaced engine needs no new binding, and what waits in the queue stays valid.
template <class Engine, class Argument>
struct bound_setter {
    const std::unique_ptr<Engine>* engine = nullptr;
    void (*set)(Engine&, Argument) = nullptr;

    void operator()(Argument value) const { set(**engine, value); }
};

template <class Engine>
class parameter_queue {
public:
    using toggle_setter = bound_setter<Engine, bool>;
    using choice_setter = bound_setter<Engine, std::int32_t>;
    using list_setter = bound_setter<Engine, std::span<const double>>;

    // Main thread. False, and the change is lost, when 511 wait already.
    bool post_change(toggle_setter setter, bool value) {
        return queue_.enqueue(flip{setter, value});
    }
    bool post_change(choice_setter setter, std::int32_t value) {
        return queue_.enqueue(pick{setter, value});
    }
    bool post_change(list_setter setter, std::span<const double> values) {
        return queue_.enqueue(fill{setter, short_list(values)});
    }

    // Audio thread, once a vector: the changes in the order in which they were made, at most as
    // many as the queue holds, so that a busy producer cannot hold the vector up.
    void apply_queued_changes();

private:
    static constexpr std::size_t requested_size = 256;
    static constexpr int most_waiting = 511;  // what a queue of that size holds

    struct flip {
        toggle_setter setter;
        bool value = false;
        void apply() const { setter(value); }
    };
    struct pick {
        choice_setter setter;
        std::int32_t value = 0;
        void apply() const { setter(value); }
    };
    struct fill {
        list_setter setter;
        short_list value;
        void apply() const { setter(value.values()); }
    };
    using queued_change = std::variant<flip, pick, fill>;

    ply::message_queue<queued_change> queue_{requested_size};
};

template <class Engine>
void parameter_queue<Engine>::apply_queued_changes() {
    queued_change change;
    for (int i = 0; i < most_waiting && queue_.dequeue(change); ++i) {
        if (const auto* f = std::get_if<flip>(&change)) f->apply();
        if (const auto* p = std::get_if<pick>(&change)) p->apply();
        if (const auto* l = std::get_if<fill>(&change)) l->apply();
    }
}

}  // namespace kv7::orv
