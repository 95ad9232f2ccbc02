// Messages by text and by selector, and the inlet they came in by.
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "host/method_call.h"
#include "host/state.h"

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

}  // namespace tesk

extern "C" int64_t proxy_getinlet(void*) {
    return tesk::current_inlet;
}
