// The memory that objects hold of the host, counted so that a leak shows.
#include <cstddef>
#include <cstring>
#include <new>

#include "host/state.h"

extern "C" {

void* sysmem_newptr(int64_t size) {
    if (size < 0) return nullptr;
    void* const memory = ::operator new(static_cast<std::size_t>(size), std::nothrow);
    if (memory != nullptr) ++tesk::state().live.pointers;
    return memory;
}

void sysmem_freeptr(void* memory) {
    if (memory == nullptr) return;
    --tesk::state().live.pointers;
    ::operator delete(memory);
}

// Aligned as an ordinary allocation is and no better: an object that needs more sees to it itself.
void* object_alloc(tesk_class* of_class) {
    if (of_class == nullptr) return nullptr;
    constexpr std::size_t alignment = 64, shift = 16;
    const auto size = static_cast<std::size_t>(of_class->size);
    auto* const block = static_cast<std::byte*>(
        ::operator new (size + shift, std::align_val_t{alignment}, std::nothrow));
    if (block == nullptr) return nullptr;
    std::byte* const memory = block + shift;
    std::memset(memory, 0, size);
    auto* const record = new tesk::instance_record;
    record->block = block;
    record->object = reinterpret_cast<tesk_signal_object*>(memory);
    record->of_class = of_class;
    record->chain.of_class = &tesk::state().chain_class;
    record->chain.builds = record;
    record->object->of_class = of_class;
    record->object->record = record;
    tesk::state().allocated.push_back(record);
    ++tesk::state().live.instances;
    return memory;
}

// Of the objects that the host makes, what objects own: dictionaries, and attributes that no class
// has taken.
void object_free(void* object) {
    if (object == nullptr) return;
    const tesk_class* const of_class = static_cast<tesk::host_object*>(object)->of_class;
    if (of_class == &tesk::state().dictionary_class) dictobj_release(object);
    if (of_class == &tesk::state().attribute_class)
        delete static_cast<tesk_class::attribute*>(object);
}

}  // extern "C"
