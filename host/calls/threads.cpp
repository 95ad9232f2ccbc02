// Functions deferred to the main thread, and which thread that is.
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
