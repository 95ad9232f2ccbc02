#include "framework/class_registration.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "framework/attribute_registration.h"
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

template <class Function>
void add_method(tesk_class* of_class, Function* method, const char* name, std::int32_t type) {
    class_addmethod(of_class, reinterpret_cast<tesk_method>(method), name, type, 0);
}

void assist_callback(void* instance, void*, std::int64_t direction, std::int64_t index,
                     char* text) {
    guarded(0, [=] {
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
        return 0;
    });
}

void dsp64_callback(void* instance, void* chain, const std::int16_t* connections, double rate,
                    std::int64_t vector_size, std::int64_t) {
    guarded(0, [=] {
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
        tesk_symbol* const name = gensym("dsp_add64");
        const tesk_method add = object_method_direct_getmethod(chain, name);
        if (add == nullptr) return 0;
        void* const target = object_method_direct_getobject(chain, name);
        reinterpret_cast<tesk_dsp_add>(add)(target, instance, device.perform, 0, nullptr);
        return 0;
    });
}

// Undoes, in reverse, what making an instance has reached.
struct unfinished_instance {
    void* instance;
    const device_class& device;
    bool stands = false;
    bool has_signals = false;
    ~unfinished_instance() {
        if (instance == nullptr) return;
        if (has_signals) z_dsp_free(instance);
        if (stands) device.destroy(instance);
    }
};

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
                        const char* source_path) {
    const std::string name = object_name_of(source_path);
    tesk_class* const made = class_new(name.c_str(), device.make, device.free, device.instance_size,
                                       nullptr, type_any, 0);
    for (const auto& [message_name, message] : prototype.messages)
        register_message(made, *message, prototype);
    for (const auto& [attribute_name, attribute] : prototype.attributes)
        register_attribute(made, *attribute);
    update_reference_page(prototype, device, name);
    return made;
}

void register_device_class(const device_class& device, object_base& prototype,
                           const char* source_path) noexcept {
    guarded(0, [&] {
        if (registered_class() != nullptr) return 0;
        the_device.store(&device);
        if (device.library_class == 1 &&
            object_attr_getlong(symbols::tesk.object(), gensym("islib")) != 0)
            return 0;
        tesk_class* const made = class_setup(prototype, device, source_path);
        add_method(made, dsp64_callback, "dsp64", type_private);
        class_dspinit(made);
        if (message_base* const setup = prototype.messages.find("teskclass_setup"))
            setup->call_one(atom(static_cast<void*>(made)), -1);
        add_method(made, assist_callback, "assist", type_private);
        class_register((device.nobox_class == 1 ? symbols::nobox : symbols::box).interned(), made);
        // The class is complete before the pointer that shows it.
        the_class.store(made, std::memory_order_release);
        is_setup_finished = true;
        return 0;
    });
}

void* make_instance(const device_class& device, tesk_symbol* name, std::int64_t count,
                    tesk_atom* values) noexcept {
    const auto given = static_cast<std::int16_t>(count & count_mask);
    const std::int64_t leading = attr_args_offset(given, values);
    void* const instance = object_alloc(registered_class());
    if (instance == nullptr) return nullptr;
    return guarded(static_cast<void*>(nullptr), [&]() -> void* {
        unfinished_instance undo{instance, device};
        const atoms arguments = atoms_from(leading, values);
        object_base* object = nullptr;
        {
            const enclosing_instance here(instance);
            object = &device.construct(instance);
        }
        undo.stands = true;
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
        object_attach_byptr_register(instance, instance, symbols::box.interned());
        attr_args_process(instance, given, values);
        undo.instance = nullptr;
        return instance;
    });
}

void free_instance(const device_class& device, void* instance) noexcept {
    guarded(0, [&] {
        z_dsp_free(instance);
        device.destroy(instance);
        return 0;
    });
}

}  // namespace kv7::ply
