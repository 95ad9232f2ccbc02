// Objects of the host that objects hold: dictionaries, counted by reference, and the preset being
// stored.

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
    const auto found = registered.find(name->name);
    if (found == registered.end()) return nullptr;
    ++found->second->references;
    ++tesk::state().live.dictionaries;
    return found->second;
}

int64_t dictobj_release(void* object) {
    if (object == nullptr) return 1;
    release(static_cast<tesk::dictionary*>(object));
    return 0;
}

int64_t binbuf_insert(void* object, void*, int64_t count, tesk_atom* values) {
    if (object == nullptr || count < 1) return 1;
    // The object itself has no text; what follows it is what a file would hold.
    static_cast<tesk::preset*>(object)->lists.push_back(
        tesk::text_of_atoms(tesk::atom_list(values + 1, values + count)));
    return 0;
}

}  // extern "C"
