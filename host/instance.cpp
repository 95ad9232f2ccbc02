// A box as programs use it: messages by text, attributes by name, and vectors of signal.
#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <utility>

#include "host/state.h"
#include "host/system.h"

namespace tesk {

namespace {

thread_local int current_inlet = 0;

struct at_inlet {
    explicit at_inlet(int inlet) : before(std::exchange(current_inlet, inlet)) {}
    ~at_inlet() { current_inlet = before; }
    at_inlet(const at_inlet&) = delete;
    at_inlet& operator=(const at_inlet&) = delete;
    int before;
};

template <class Function, class... Arguments>
void call_as(tesk_method method, Arguments... arguments) {
    reinterpret_cast<Function*>(method)(arguments...);
}

// Calls a method with the argument list that its type stands for; false when atoms are missing.
bool call_method(const tesk_class::method& method, void* self, atom_list& values) {
    const bool has_first = !values.empty();
    switch (method.type) {
        case 0:
            call_as<void(void*)>(method.function, self);
            return true;
        case 1:
            if (has_first)
                call_as<void(void*, std::int64_t)>(method.function, self,
                                                   atom_getlong(&values.front()));
            return has_first;
        case 2:
            if (has_first)
                call_as<void(void*, double)>(method.function, self, atom_getfloat(&values.front()));
            return has_first;
        case 3:
            if (has_first)
                call_as<void(void*, tesk_symbol*)>(method.function, self,
                                                   atom_getsym(&values.front()));
            return has_first;
        case 4:
            if (has_first)
                call_as<void(void*, void*)>(method.function, self, atom_getobj(&values.front()));
            return has_first;
        default:
            break;
    }
    const auto count = static_cast<std::int64_t>(values.size());
    tesk_atom result{};
    if (method.type == 14)
        call_as<void(void*, tesk_symbol*, std::int64_t, tesk_atom*, tesk_atom*)>(
            method.function, self, method.name, count, values.data(), &result);
    else
        call_as<void(void*, tesk_symbol*, std::int64_t, tesk_atom*)>(
            method.function, self, method.name, count, values.data());
    return true;
}

}  // namespace

int inlet_of_this_thread() {
    return current_inlet;
}

instance::instance(instance_record* record) noexcept
    : record_(record), output_count_(static_cast<int>(record->outlets.size())) {}

instance::instance(instance_record* record, borrowed) noexcept : instance(record) {
    borrowed_ = true;
}

instance::~instance() {
    if (borrowed_) return;
    free();
    delete record_;
}

void instance::free() {
    if (record_->ending.exchange(true)) return;
    while (record_->calls.load() != 0) std::this_thread::yield();
    if (record_->of_class->free != nullptr) record_->of_class->free(record_->object);
    z_dsp_free(record_->object);
    std::erase(state().instances, record_);
    give_back(*record_);
}

void instance::refuse(const std::string& why) const {
    state().error(class_name() + ": " + why);
}

bool instance::send(const std::string& text, int inlet) {
    atom_list values;
    try {
        values = atoms_of_text(text);
    } catch (const std::invalid_argument& unreadable) {
        refuse(std::string("message not understood: ") + unreadable.what());
        return false;
    }
    if (values.empty()) {
        refuse("empty message");
        return false;
    }
    if (values.front().type != 3) {
        const char* const selector =
            values.size() > 1 ? "list" : (values.front().type == 1 ? "int" : "float");
        return send(selector, values, inlet);
    }
    const std::string selector = values.front().value.as_symbol->name;
    values.erase(values.begin());
    return send(selector, values, inlet);
}

bool instance::send(const std::string& selector, const atom_list& values, int inlet) {
    const tesk_class& of_class = *record_->of_class;
    tesk_symbol* const name = gensym(selector.c_str());
    atom_list given = values;
    const tesk_class::method* method = of_class.find_method(name);
    // A number goes to the other method for numbers when its own is missing.
    if (method == nullptr && (selector == "int" || selector == "float"))
        method = of_class.find_method(gensym(selector == "int" ? "float" : "int"));
    if (method == nullptr && of_class.find_attribute(name) != nullptr) return set(selector, values);
    tesk_class::method through{};
    if (const auto* const anything = of_class.find_method(gensym("anything"));
        method == nullptr && anything != nullptr) {
        through = {name, anything->function, anything->type};
        method = &through;
    }
    if (method == nullptr) {
        refuse("no message or attribute named " + selector);
        return false;
    }
    if (method->type == 9 || method->type == 69) {
        refuse(selector + " is a private message");
        return false;
    }
    const call_into call(*record_);
    if (call.refused()) return false;
    const at_inlet here(inlet);
    if (call_method(*method, record_->object, given)) return true;
    refuse(selector + " needs a value");
    return false;
}

bool instance::set(const std::string& attribute, const atom_list& values) {
    const tesk_symbol* const name = gensym(attribute.c_str());
    const tesk_class::attribute* const found = record_->of_class->find_attribute(name);
    if (found == nullptr || found->setter == nullptr) {
        refuse("no attribute named " + attribute);
        return false;
    }
    if (found->most > 1 && static_cast<std::int64_t>(values.size()) > found->most) {
        refuse(attribute + ": " + std::to_string(values.size()) + " values, at most " +
               std::to_string(found->most));
        return false;
    }
    atom_list given = values;
    const attribute_info& info = *described().attribute(attribute);
    if (!given.empty() && given.front().type == 3 && info.property("style") == "enumindex") {
        const std::vector<std::string> names = info.value_names();
        const std::string wanted = given.front().value.as_symbol->name;
        const auto place = std::find(names.begin(), names.end(), wanted);
        if (place == names.end()) {
            refuse(attribute + ": no value named " + wanted);
            return false;
        }
        given.front() = atom_of(static_cast<std::int64_t>(place - names.begin()));
    }
    return set_attribute(*record_, name, std::move(given)) == 0;
}

bool instance::set(const std::string& attribute, const std::vector<double>& values) {
    atom_list atoms;
    for (const double value : values) atoms.push_back(atom_of(value));
    return set(attribute, atoms);
}

bool instance::set(const std::string& attribute, double value) {
    return set(attribute, atom_list{atom_of(value)});
}

atom_list instance::get(const std::string& attribute) {
    std::int64_t count = 0;
    tesk_atom* values = nullptr;
    tesk_symbol* const name = gensym(attribute.c_str());
    if (record_->of_class->find_attribute(name) == nullptr) {
        refuse("no attribute to read named " + attribute);
        return {};
    }
    const call_into call(*record_);
    if (call.refused() || object_attr_getvalueof(record_->object, name, &count, &values) != 0)
        return {};
    const atom_list result(values, values + count);
    sysmem_freeptr(values);
    return result;
}

std::vector<double> instance::get_numbers(const std::string& attribute) {
    std::vector<double> numbers;
    for (const tesk_atom& value : get(attribute)) numbers.push_back(atom_getfloat(&value));
    return numbers;
}

double instance::get_number(const std::string& attribute) {
    const std::vector<double> numbers = get_numbers(attribute);
    return numbers.empty() ? std::numeric_limits<double>::quiet_NaN() : numbers.front();
}

bool instance::prepare(double rate, int vector_size) {
    return prepare(rate, vector_size,
                   std::vector<std::int16_t>(static_cast<std::size_t>(inlets() + outlets()), 1));
}

bool instance::prepare(double rate, int vector_size, const std::vector<std::int16_t>& connected) {
    using dsp64 = void(void*, void*, const std::int16_t*, double, std::int64_t, std::int64_t);
    const tesk_class::method* const method = record_->of_class->find_method(gensym("dsp64"));
    const call_into call(*record_);
    if (call.refused() || method == nullptr || record_->signals_ended.load()) return false;
    const bool guarded = state().guarded.load();
    if (guarded) {
        // The vector under way is awaited, and none begins until the state is idle again.
        for (int idle = instance_record::idle;
             !record_->state.compare_exchange_weak(idle, instance_record::stopped);
             idle = instance_record::idle)
            std::this_thread::yield();
        record_->perform.store(nullptr);
    }
    call_as<dsp64>(method->function, record_->object, static_cast<void*>(&record_->chain),
                   connected.data(), rate, static_cast<std::int64_t>(vector_size), std::int64_t{0});
    // What "dsp64" changed is complete before a vector may begin.
    if (guarded) record_->state.store(instance_record::idle);
    return record_->perform.load() != nullptr;
}

bool instance::run(const double* const* in, double* const* out, int frames) noexcept {
    int idle = instance_record::idle;
    if (record_->state.compare_exchange_strong(idle, instance_record::performing)) {
        const tesk_perform perform = record_->perform.load();
        if (perform != nullptr) {
            system::enter_realtime();
            perform(record_->object, &record_->chain, const_cast<double**>(in), record_->inlets,
                    const_cast<double**>(out), outlets(), frames, 0, record_->user.load());
            system::leave_realtime();
        }
        record_->state.store(instance_record::idle);
        if (perform != nullptr) return true;
    }
    for (int i = 0; i < output_count_; ++i) std::fill_n(out[i], frames, 0.0);
    return false;
}

int instance::inlets() const {
    return static_cast<int>(record_->inlets);
}
int instance::outlets() const {
    return output_count_;
}

std::string instance::assist(bool outlet, int index, const std::string& before) {
    using assist = void(void*, void*, std::int64_t, std::int64_t, char*);
    char text[257] = {};
    before.copy(text, sizeof text - 1);
    const tesk_class::method* const method = record_->of_class->find_method(gensym("assist"));
    const call_into call(*record_);
    if (method != nullptr && !call.refused())
        call_as<assist>(method->function, record_->object, static_cast<void*>(record_->object),
                        std::int64_t{outlet ? 2 : 1}, std::int64_t{index},
                        static_cast<char*>(text));
    return text;
}

const std::string& instance::class_name() const {
    return record_->of_class->info.name;
}
const class_info& instance::described() const {
    return record_->of_class->info;
}

std::vector<std::string> instance::notifications() const {
    const std::lock_guard lock(record_->notification_mutex);
    return record_->notifications;
}

tesk_method instance::method(const std::string& name) const {
    const tesk_class::method* const found = record_->of_class->find_method(gensym(name.c_str()));
    return found != nullptr ? found->function : nullptr;
}

void* instance::object() const {
    return record_->object;
}

}  // namespace tesk

extern "C" int64_t proxy_getinlet(void*) {
    return tesk::inlet_of_this_thread();
}
