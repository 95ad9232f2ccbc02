// The records of instances: found from an object, set by name, ended.
#include <new>
#include <string>
#include <utility>

#include "host/state.h"

namespace tesk {

instance_record* record_of(void* object) {
    if (object == nullptr) return nullptr;
    const host_state& host = state();
    const tesk_class* const of_class = static_cast<host_object*>(object)->of_class;
    for (const tesk_class* own : {&host.attribute_class, &host.chain_class, &host.dictionary_class,
                                  &host.outlet_class, &host.preset_class, &host.self_class})
        if (of_class == own) return nullptr;
    return static_cast<instance_record*>(static_cast<tesk_signal_object*>(object)->record);
}

std::int64_t set_attribute(instance_record& record, const tesk_symbol* name, atom_list values) {
    const tesk_class::attribute* const attribute = record.of_class->find_attribute(name);
    if (attribute == nullptr || attribute->setter == nullptr) return 1;
    const auto count = static_cast<std::int64_t>(values.size());
    if (attribute->most > 1 && count > attribute->most) return 1;
    const call_into call(record);
    if (call.refused()) return 1;
    return attribute->setter(record.object, const_cast<tesk_class::attribute*>(attribute), count,
                             values.data());
}

void give_back(instance_record& record) {
    host_state& host = state();
    drop_tasks_of(record.object);
    host.live.outlets -= static_cast<std::int64_t>(record.outlets.size());
    record.outlets.clear();
    if (record.registered) --host.live.registrations;
    record.registered = false;
    if (record.object == nullptr) return;
    ::operator delete (record.block, std::align_val_t{64});
    record.object = nullptr;
    --host.live.instances;
}

live_memory host::live() const {
    const auto& now = state().live;
    return {now.pointers, now.instances,    now.qelems,
            now.outlets,  now.dictionaries, now.registrations};
}

}  // namespace tesk
