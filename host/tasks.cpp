// Runs the functions that were deferred to the main thread.
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <utility>

#include "host/state.h"

namespace tesk {

void drop_tasks_of(const void* object) {
    host_state& host = state();
    const std::lock_guard lock(host.task_mutex);
    std::erase_if(host.tasks, [=](const task& t) {
        return t.set == nullptr && object != nullptr && t.object == object;
    });
}

int host::serve() {
    host_state& kept = state();
    std::size_t waiting = 0;
    {
        const std::lock_guard lock(kept.task_mutex);
        waiting = kept.tasks.size();
    }
    int ran = 0;
    for (; waiting > 0; --waiting, ++ran) {
        task next;
        {
            const std::lock_guard lock(kept.task_mutex);
            if (kept.tasks.empty()) break;
            next = std::move(kept.tasks.front());
            kept.tasks.pop_front();
            if (next.set != nullptr) next.set->is_set = false;
        }
        if (next.set != nullptr)
            next.set->function(next.set->argument);
        else
            next.function(next.object, next.symbol, static_cast<std::int16_t>(next.values.size()),
                          next.values.data());
    }
    return ran;
}

}  // namespace tesk
