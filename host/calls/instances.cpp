// The calls of an instance: arguments, ports, the signal chain, its own attributes.
#include <string>

#include "host/state.h"

namespace {

bool begins_attribute(const tesk_atom& atom) {
    return atom.type == 3 && atom.value.as_symbol->name[0] == '@' &&
           atom.value.as_symbol->name[1] != '\0';
}

}  // namespace

extern "C" {

int64_t attr_args_offset(int16_t count, tesk_atom* values) {
    int64_t leading = 0;
    while (leading < count && !begins_attribute(values[leading])) ++leading;
    return leading;
}

void attr_args_process(void* object, int16_t count, tesk_atom* values) {
    tesk::instance_record* const record = tesk::record_of(object);
    if (record == nullptr) return;
    tesk::instance handle(record, tesk::instance::borrowed{});
    for (int64_t i = attr_args_offset(count, values); i < count;) {
        const std::string name = values[i++].value.as_symbol->name + 1;
        tesk::atom_list given;
        while (i < count && !begins_attribute(values[i])) given.push_back(values[i++]);
        handle.set(name, given);
    }
}

void z_dsp_setup(void* instance, int64_t inlets) {
    if (tesk::instance_record* const record = tesk::record_of(instance)) record->inlets = inlets;
}

void z_dsp_free(void* instance) {
    tesk::instance_record* const record = tesk::record_of(instance);
    if (record == nullptr || record->signals_ended.exchange(true)) return;
    // A vector under way is awaited; the state is never idle again.
    for (int idle = tesk::instance_record::idle;
         !record->state.compare_exchange_weak(idle, tesk::instance_record::stopped);
         idle = tesk::instance_record::idle)
        std::this_thread::yield();
    record->perform.store(nullptr);
}

double sys_getsr(void) {
    return tesk::state().rate.load();
}
int64_t sys_getblksize(void) {
    return tesk::state().vector_size.load();
}

void* outlet_new(void* object, const char* type) {
    tesk::instance_record* const record = tesk::record_of(object);
    if (record == nullptr) return nullptr;
    auto made = std::make_unique<tesk::outlet>();
    made->of_class = &tesk::state().outlet_class;
    made->type = type != nullptr ? type : "";
    ++tesk::state().live.outlets;
    return record->outlets.emplace_back(std::move(made)).get();
}

int64_t object_attach_byptr_register(void* object, void*, tesk_symbol*) {
    tesk::instance_record* const record = tesk::record_of(object);
    if (record == nullptr) return 1;
    if (!record->registered) ++tesk::state().live.registrations;
    record->registered = true;
    return 0;
}

int64_t object_notify(void* object, tesk_symbol* message, void*) {
    tesk::instance_record* const record = tesk::record_of(object);
    if (record == nullptr) return 1;
    const std::lock_guard lock(record->notification_mutex);
    record->notifications.emplace_back(message->name);
    return 0;
}

void* object_method_imp(void* object, tesk_symbol* message) {
    if (object == nullptr ||
        static_cast<tesk::host_object*>(object)->of_class != &tesk::state().attribute_class)
        return nullptr;
    const auto* const attribute = static_cast<tesk_class::attribute*>(object);
    if (message == gensym("getname")) return attribute->name;
    return message == gensym("gettype") ? attribute->type : nullptr;
}

tesk_method object_method_direct_getmethod(void* object, tesk_symbol* message) {
    if (object == nullptr) return nullptr;
    const tesk_class::method* const found =
        static_cast<tesk::host_object*>(object)->of_class->find_method(message);
    return found != nullptr ? found->function : nullptr;
}

void* object_method_direct_getobject(void* object, tesk_symbol*) {
    return object;
}

tesk_symbol* object_classname(void* object) {
    return object == nullptr ? gensym("") : static_cast<tesk::host_object*>(object)->of_class->name;
}

int64_t object_classname_compare(void* object, tesk_symbol* name) {
    return object != nullptr && object_classname(object) == name ? 1 : 0;
}

int64_t object_attr_setvalueof(void* object, tesk_symbol* name, int64_t count, tesk_atom* values) {
    tesk::instance_record* const record = tesk::record_of(object);
    if (record == nullptr) return 1;
    return tesk::set_attribute(*record, name, tesk::atom_list(values, values + count));
}

int64_t object_attr_getvalueof(void* object, tesk_symbol* name, int64_t* count,
                               tesk_atom** values) {
    tesk::instance_record* const record = tesk::record_of(object);
    const tesk_class::attribute* const attribute =
        record == nullptr ? nullptr : record->of_class->find_attribute(name);
    if (attribute == nullptr || attribute->getter == nullptr) return 1;
    const tesk::call_into call(*record);
    if (call.refused()) return 1;
    return attribute->getter(object, const_cast<tesk_class::attribute*>(attribute), count, values);
}

int64_t object_attr_getlong(void* object, tesk_symbol* name) {
    if (object == &tesk::state().self)
        return name == gensym("islib") && tesk::state().library.load() ? 1 : 0;
    int64_t count = 0;
    tesk_atom* values = nullptr;
    if (object_attr_getvalueof(object, name, &count, &values) != 0 || count == 0) return 0;
    const int64_t result = atom_getlong(values);
    sysmem_freeptr(values);
    return result;
}

int64_t object_attr_setdisabled(void*, tesk_symbol*, int64_t) {
    return 0;
}  // no inspector here

// No views are drawn here: a view is its own context, a box has the size of a new one.
void* patcherview_get_jgraphics(void* view) {
    return view;
}
void jbox_get_rect_for_view(void*, void*, tesk_rectangle* rectangle) {
    *rectangle = {0, 0, 100, 22};
}

}  // extern "C"
