#include "framework/ports.h"

#include <utility>

#include "framework/guarded.h"

namespace kv7::ply {

namespace {

void run_trigger(void* trigger) {
    guarded([trigger] { static_cast<thread_trigger<void*, 3>*>(trigger)->callback(); });
}

}  // namespace

thread_trigger<void*, 3>::thread_trigger(void* baton_)
    : baton(baton_), qelem_(this, run_trigger, "outlet") {}

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
    void* const host_object = owner.valid_host_object();
    instance = outlet_new(host_object, type.empty() ? nullptr : type.c_str());
    if (host_object != nullptr) require_pointer(instance, "outlet_new", "outlet " + description);
    queue_.baton = instance;
}

}  // namespace kv7::ply
