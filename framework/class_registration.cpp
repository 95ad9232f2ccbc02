#include "framework/class_registration.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "framework/attribute_registration.h"
#include "framework/host_answer.h"
#include "framework/message_wrappers.h"
#include "framework/ports.h"
#include "framework/reference_page.h"
#include "framework/symbol_table.h"

namespace kv7::ply {

namespace {

std::atomic<tesk_class*> the_class{nullptr};
constinit bool is_setup_finished = false;
std::atomic<const device_class*> the_device{nullptr};  // set before any callback can come

constexpr const char* source_extension = ".cpp";
constexpr std::int64_t count_mask = 0xFFFF;  // the host's counts of atoms have 16 bits

// The host's text buffer for a port.
constexpr std::size_t assist_size = 256;
constexpr std::int64_t direction_outlet = 2;

void assist_callback(void* instance, void*, std::int64_t direction, std::int64_t index,
                     char* text) {
    guarded([=] {
        const object_base& object = object_of(instance);
        const auto copy_from = [index, text](const auto& ports) {
            if (index >= 0 && static_cast<std::size_t>(index) < ports.size())
                std::strncpy(text, ports[static_cast<std::size_t>(index)]->description.c_str(),
                             assist_size);
        };
        if (direction == direction_outlet)
            copy_from(object.outlets);
        else
            copy_from(object.inlets);
    });
}

void dsp64_callback(void* instance, void* chain, const std::int16_t* connections, double rate,
                    std::int64_t vector_size, std::int64_t) {
    guarded([=] {
        const device_class& device = *the_device.load();
        object_base& object = object_of(instance);
        device.operator_of(instance).prepare(rate, vector_size);
        if (connections != nullptr) {
            const std::int16_t* count = connections;
            for (inlet_base* inlet : object.inlets) inlet->has_signal_connection = *count++ != 0;
            for (outlet_base* outlet : object.outlets)
                outlet->has_signal_connection = *count++ != 0;
        }
        if (message_base* const setup = object.messages.find("dspsetup"))
            setup->call({atom(rate), atom(vector_size)}, -1);
        const symbol name = "dsp_add64";
        const tesk_method add =
            require_pointer(object_method_direct_getmethod(chain, name.interned()),
                            "object_method_direct_getmethod", "dsp_add64");
        void* const target = require_pointer(object_method_direct_getobject(chain, name.interned()),
                                             "object_method_direct_getobject", "dsp_add64");
        reinterpret_cast<tesk_dsp_add>(add)(target, instance, device.perform, 0, nullptr);
    });
}

// Undoes in reverse order the steps of an instance that was not finished.
struct unfinished_instance {
    void* instance;
    const device_class& device;
    bool constructed = false;
    bool has_signals = false;
    ~unfinished_instance() {
        if (instance == nullptr) return;
        if (has_signals) z_dsp_free(instance);
        if (constructed) device.destroy(instance);
    }
};

// Whether the host runs as a library, in which some classes are not registered.
bool host_is_library() {
    void* const host = symbols::tesk.object();
    return host != nullptr && object_attr_getlong(host, symbol("islib").interned()) != 0;
}

}  // namespace

tesk_class* registered_class() noexcept {
    return the_class.load(std::memory_order_acquire);
}
bool setup_finished() noexcept {
    return is_setup_finished;
}
object_base& object_of(void* host_instance) {
    return the_device.load()->base_of(host_instance);
}

std::string object_name_of(const std::string& source_path) {
    std::size_t separator = source_path.rfind('/');
    if (separator == std::string::npos) separator = source_path.rfind('\\');
    std::string file =
        separator == std::string::npos ? source_path : source_path.substr(separator + 1);
    const std::size_t tilde = file.find(std::string("_tilde") + source_extension);
    if (tilde != std::string::npos) return file.substr(0, tilde) + "~";
    const std::size_t point = file.rfind('.');
    if (point != std::string::npos && file.substr(point) == source_extension)
        return file.substr(0, point);
    return file;
}

tesk_class* class_setup(object_base& prototype, const device_class& device,
                        const class_settings& settings, const char* source_path) {
    const std::string name = object_name_of(source_path);
    tesk_class* const made = require_pointer(class_new(name.c_str(), device.make, device.free,
                                                       device.instance_size, nullptr, type_any, 0),
                                             "class_new", "class " + name);
    for (const auto& [message_name, message] : prototype.messages)
        register_message(made, *message, prototype);
    refused_properties refused;
    for (const auto& [attribute_name, attribute] : prototype.attributes)
        register_attribute(made, *attribute, refused);
    refused.report(name);
    update_reference_page(prototype, device.metadata, settings, name);
    return made;
}

void register_device_class(const device_class& device, object_base& prototype,
                           const class_settings& settings, const char* source_path) noexcept {
    guarded([&] {
        if (registered_class() != nullptr) return;
        symbols::intern_missing();
        the_device.store(&device);
        if (settings.library_class == 1 && host_is_library()) return;
        tesk_class* const made = class_setup(prototype, device, settings, source_path);
        add_method(made, dsp64_callback, "dsp64", type_private);
        class_dspinit(made);
        if (message_base* const setup = prototype.messages.find("teskclass_setup"))
            setup->call_one(atom(static_cast<void*>(made)), -1);
        add_method(made, assist_callback, "assist", type_private);
        require_success(
            class_register((settings.nobox_class == 1 ? symbols::nobox : symbols::box).interned(),
                           made),
            "class_register", "class " + object_name_of(source_path));
        // Publishes the complete class.
        the_class.store(made, std::memory_order_release);
        is_setup_finished = true;
    });
}

void* make_instance(const device_class& device, tesk_symbol* name, std::int64_t count,
                    tesk_atom* values) noexcept {
    return guarded(static_cast<void*>(nullptr), [&]() -> void* {
        tesk_class* const of_class =
            require_pointer(registered_class(), "class_register", "the class of an instance");
        const auto given = static_cast<std::int16_t>(count & count_mask);
        const std::int64_t leading = attr_args_offset(given, values);
        void* const instance =
            require_pointer(object_alloc(of_class), "object_alloc", "an instance");
        unfinished_instance undo{instance, device};
        const atoms arguments = atoms_from(std::min<std::int64_t>(leading, given), values);
        object_base* object = nullptr;
        {
            const enclosing_instance here(instance);
            object = &device.construct(instance);
        }
        undo.constructed = true;
        for (std::size_t i = 0; i < std::min(arguments.size(), object->arguments.size()); ++i)
            if (const auto& receive = object->arguments[i]->function) receive(arguments[i]);
        object->class_symbol = name;
        z_dsp_setup(instance, static_cast<std::int64_t>(object->inlets.size()));
        undo.has_signals = true;
        auto& flags = static_cast<tesk_signal_object*>(instance)->flags;
        flags = static_cast<std::uint16_t>(flags | 1u);
        for (auto outlet = object->outlets.rbegin(); outlet != object->outlets.rend(); ++outlet)
            (*outlet)->create();
        if (message_base* const setup = object->messages.find("setup")) setup->call(arguments, -1);
        // Nothing here depends on the answer, whose meaning is the host's.
        object_attach_byptr_register(instance, instance, symbols::box.interned());
        attr_args_process(instance, given, values);
        undo.instance = nullptr;
        return instance;
    });
}

void free_instance(const device_class& device, void* instance) noexcept {
    guarded([&] {
        z_dsp_free(instance);
        device.destroy(instance);
    });
}

}  // namespace kv7::ply
