// What waits for the main thread, and which thread that is.
#include <algorithm>

#include "host/state.h"

extern "C" {

int16_t systhread_ismainthread(void) {
    return std::this_thread::get_id() == tesk::state().main_thread ? 1 : 0;
}

void* qelem_new(void* argument, tesk_method function) {
    ++tesk::state().live.qelems;
    return new tesk::qelem{argument, reinterpret_cast<void (*)(void*)>(function)};
}

void qelem_set(void* handle) {
    tesk::host_state& host = tesk::state();
    auto* const set = static_cast<tesk::qelem*>(handle);
    const std::lock_guard lock(host.task_mutex);
    if (set->is_set) return;
    set->is_set = true;
    host.tasks.push_back({set, nullptr, nullptr, nullptr, {}});
}

void qelem_free(void* handle) {
    if (handle == nullptr) return;
    tesk::host_state& host = tesk::state();
    auto* const gone = static_cast<tesk::qelem*>(handle);
    {
        const std::lock_guard lock(host.task_mutex);
        std::erase_if(host.tasks, [=](const tesk::task& t) { return t.set == gone; });
    }
    delete gone;
    --host.live.qelems;
}

void defer(void* object, tesk_deferred function, tesk_symbol* symbol, int16_t count,
           tesk_atom* values) {
    tesk::host_state& host = tesk::state();
    tesk::instance_record* const record = tesk::record_of(object);
    const std::lock_guard lock(host.task_mutex);
    // Under the lock that drop_tasks_of takes: either it sees this task, or this sees the end.
    if (record != nullptr && record->ending.load()) return;
    host.tasks.push_back({.object = object,
                          .function = function,
                          .symbol = symbol,
                          .values = tesk::atom_list(values, values + count)});
}

}  // extern "C"

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
