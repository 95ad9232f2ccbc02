// Objects of the host that are found by name: dictionaries, and the preset being stored.
#include <utility>

#include "host/state.h"

namespace {

void release(tesk::dictionary* released) {
    tesk::host_state& host = tesk::state();
    --host.live.dictionaries;
    if (--released->references > 0) return;
    if (!released->registered_name.empty()) host.dictionaries.erase(released->registered_name);
    delete released;
}

}  // namespace

extern "C" {

void* dictionary_new(void) {
    auto* const made = new tesk::dictionary;
    made->of_class = &tesk::state().dictionary_class;
    ++tesk::state().live.dictionaries;
    return made;
}

void* dictobj_findregistered_retain(tesk_symbol* name) {
    auto& registered = tesk::state().dictionaries;
    const auto place = registered.find(name->name);
    if (place == registered.end()) return nullptr;
    ++place->second->references;
    ++tesk::state().live.dictionaries;
    return place->second;
}

int64_t dictobj_release(void* object) {
    if (object == nullptr) return 1;
    release(static_cast<tesk::dictionary*>(object));
    return 0;
}

void object_free(void* object) {
    if (object == nullptr) return;
    if (static_cast<tesk::host_object*>(object)->of_class == &tesk::state().dictionary_class)
        release(static_cast<tesk::dictionary*>(object));
}

int64_t binbuf_insert(void* object, void*, int64_t count, tesk_atom* values) {
    if (object == nullptr || count < 1) return 1;
    // The object itself has no text; what follows it is what a file would hold.
    static_cast<tesk::preset*>(object)->lists.push_back(
        tesk::text_of_atoms(tesk::atom_list(values + 1, values + count)));
    return 0;
}

}  // extern "C"

namespace tesk {

void host::bind(const std::string& symbol_name, void* object) {
    gensym(symbol_name.c_str())->object = object;
}

void* host::new_dictionary(const std::string& registered_name) {
    auto* const made = static_cast<dictionary*>(dictionary_new());
    made->registered_name = registered_name;
    if (!registered_name.empty()) state().dictionaries[registered_name] = made;
    return made;
}

void host::free_dictionary(void* object) {
    object_free(object);
}

std::vector<std::string> host::store_preset() {
    preset stored;
    stored.of_class = &state().preset_class;
    bind("_preset", &stored);
    for (instance_record* const record : state().instances) {
        const tesk_class::method* const method = record->of_class->find_method(gensym("preset"));
        if (method != nullptr) reinterpret_cast<void (*)(void*)>(method->function)(record->object);
    }
    bind("_preset", nullptr);
    return std::move(stored.lists);
}

}  // namespace tesk
