// What programs bind to names: dictionaries, and the preset being stored.
#include <string>
#include <utility>
#include <vector>

#include "host/state.h"

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
