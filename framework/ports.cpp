#include "framework/ports.h"

#include <utility>

namespace kv7::ply {

namespace {

void run_trigger(void* trigger) {
    guarded(0, [trigger] {
        static_cast<thread_trigger<void*, 3>*>(trigger)->callback();
        return 0;
    });
}

}  // namespace

thread_trigger<void*, 3>::thread_trigger(void* baton_)
    : baton(baton_), qelem_(qelem_new(this, reinterpret_cast<tesk_method>(run_trigger))) {}

thread_trigger<void*, 3>::~thread_trigger() {
    qelem_free(qelem_);
}

port::port(object_base* owner_, std::string description_, std::string type_)
    : owner(*owner_), description(std::move(description_)), type(std::move(type_)) {}

inlet_base::inlet_base(object_base* owner_, std::string description_, std::string type_)
    : port(owner_, std::move(description_), std::move(type_)) {
    owner.inlets.push_back(this);
}

outlet_base::outlet_base(object_base* owner_, std::string description_, std::string type_)
    : port(owner_, std::move(description_), std::move(type_)) {
    owner.outlets.push_back(this);
}

inlet<0>::inlet(object_base* owner_, std::string description_, std::string type_)
    : inlet_base(owner_, std::move(description_), std::move(type_)) {}

outlet<3, 0>::outlet(object_base* owner_, std::string description_, std::string type_)
    : outlet_base(owner_, std::move(description_), std::move(type_)) {
    accumulated_.reserve(1);
}

void outlet<3, 0>::create() {
    instance = outlet_new(owner.valid_host_object(), type.empty() ? nullptr : type.c_str());
    queue_.baton = instance;
}

}  // namespace kv7::ply
