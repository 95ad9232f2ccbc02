// Makes a host class of any device class, and instances of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/guarded.h"
#include "framework/host_interface.h"
#include "framework/object_base.h"
#include "framework/signal.h"
#include "framework/text.h"

#if defined(_WIN32)
#define KV7_EXPORT __declspec(dllexport)
#else
#define KV7_EXPORT __attribute__((visibility("default")))
#endif

namespace kv7::ply {

// Settings of a class, which its constructor may change; read from the prototype.
struct class_settings {
    int skip_reference_page = 0;  // 1: no page is written
    int nobox_class = 0;          // 1: registered in the name space "nobox"
    int library_class = 0;        // 1: registration is skipped while the host's "islib" is set
};

constexpr std::size_t object_alignment = 64;  // bytes, of a device object

// Between object_base and the device class T, which may hold these constants:
//     static constexpr const char* class_description, *class_author;
//     static constexpr const char* class_tags, *class_see_also;   // comma-separated
//     static constexpr const char* class_flags;                   // comma-separated options
// Where T is a wrapper of the device class, T::described_class names that class, which holds them.
template <class T, int N>
class alignas(object_alignment) object : public object_base, public class_settings {
public:
    std::vector<std::string> class_options() const override {
        if constexpr (requires { typename T::described_class; })
            return options_of<typename T::described_class>();
        else
            return options_of<T>();
    }

private:
    template <class Described>
    static std::vector<std::string> options_of() {
        if constexpr (requires { Described::class_flags; })
            return split_list(Described::class_flags);
        else
            return {};
    }
};

// What the reference page says of the class as a whole.
struct class_metadata {
    const char* description = "";
    const char* author = "";
    const char* tags = "";      // comma-separated
    const char* see_also = "";  // comma-separated
};

// All that the framework needs to know of a device class; one constant for each.
struct device_class {
    std::int64_t instance_size;                      // bytes, of host_instance
    object_base& (*construct)(void* host_instance);  // in place
    void (*destroy)(void* host_instance);            // in place
    object_base& (*base_of)(void* host_instance);    // any thread
    vector_operator<0>& (*operator_of)(void* host_instance);
    tesk_perform perform;
    tesk_new make;
    tesk_free free;
    class_metadata metadata;
};

// What the host allocates for one object: its own header, then the device object at the next
// aligned address. A host may align its memory to less than that, so the size has room to spare.
template <class T>
struct host_instance {
    static constexpr std::size_t size =
        sizeof(tesk_signal_object) + sizeof(T) + object_alignment - alignof(tesk_signal_object);

    static_assert(alignof(T) == object_alignment);
    static void* storage(void* instance) noexcept {
        const auto header_end =
            reinterpret_cast<std::uintptr_t>(instance) + sizeof(tesk_signal_object);
        return reinterpret_cast<void*>((header_end + object_alignment - 1) &
                                       ~(object_alignment - 1));
    }
    static T& device(void* instance) noexcept {
        return *std::launder(static_cast<T*>(storage(instance)));
    }
};

tesk_class* registered_class() noexcept;  // null until registration has ended well; any thread
bool setup_finished() noexcept;           // false until registration ends; main thread
object_base& object_of(void* host_instance);

// orv.device.vesk_tilde.cpp gives orv.device.vesk~, plain.cpp gives plain.
std::string object_name_of(const std::string& source_path);

// The parts of registration, instances and signal set-up that do not depend on the class. What the
// host refuses ends them with one line in the error channel; a later load registers anew.
void register_device_class(const device_class& device, object_base& prototype,
                           const class_settings& settings, const char* source_path) noexcept;
tesk_class* class_setup(object_base& prototype, const device_class& device,
                        const class_settings& settings, const char* source_path);  // throws
void* make_instance(const device_class& device, tesk_symbol* name, std::int64_t count,
                    tesk_atom* values) noexcept;
void free_instance(const device_class& device, void* instance) noexcept;

template <class T>
void perform_callback(void* instance, void*, double** inputs, std::int64_t input_count,
                      double** outputs, std::int64_t output_count, std::int64_t frames,
                      std::int64_t, void*) {
    const signal_bundle in{inputs, static_cast<std::int32_t>(input_count),
                           static_cast<std::int32_t>(frames)};
    const signal_bundle out{outputs, static_cast<std::int32_t>(output_count),
                            static_cast<std::int32_t>(frames)};
    static_cast<vector_operator<0>&>(host_instance<T>::device(instance))(in, out);
}

template <class T>
constexpr class_metadata metadata_of() {
    class_metadata data;
    if constexpr (requires { T::class_description; }) data.description = T::class_description;
    if constexpr (requires { T::class_author; }) data.author = T::class_author;
    if constexpr (requires { T::class_tags; }) data.tags = T::class_tags;
    if constexpr (requires { T::class_see_also; }) data.see_also = T::class_see_also;
    return data;
}

template <class T>
const device_class& device_class_of() {
    static const device_class device{
        host_instance<T>::size,
        [](void* memory) -> object_base& { return *::new (host_instance<T>::storage(memory)) T; },
        [](void* instance) { std::destroy_at(&host_instance<T>::device(instance)); },
        [](void* instance) -> object_base& { return host_instance<T>::device(instance); },
        [](void* instance) -> vector_operator<0>& { return host_instance<T>::device(instance); },
        perform_callback<T>,
        [](tesk_symbol* name, std::int64_t count, tesk_atom* values) {
            return make_instance(device_class_of<T>(), name, count, values);
        },
        [](void* instance) { free_instance(device_class_of<T>(), instance); },
        metadata_of<T>()};
    return device;
}

// Called once by ext_main with the path of the device's source file. A prototype that is not
// supplied is made and destroyed here.
template <class T>
void register_class(const char* source_path, T* prototype = nullptr) noexcept {
    if (registered_class() != nullptr) return;
    guarded([=] {
        const std::unique_ptr<T> made(prototype == nullptr ? new T : nullptr);
        T& used = prototype == nullptr ? *made : *prototype;
        register_device_class(device_class_of<T>(), used, used, source_path);
    });
}

}  // namespace kv7::ply
