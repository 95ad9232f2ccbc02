// The root of every device object: what encloses it at the host, and the tables in which its
// ports, arguments, messages and attributes enter themselves.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/atoms.h"
#include "framework/ordered_map.h"

namespace kv7::ply {

class attribute_base;
class inlet_base;
class message_base;
class outlet_base;

// One argument of the object box; the device owns it.
struct argument_base {
    symbol name;
    std::string description;
    bool required = false;
    std::function<void(const atom&)> function;  // receives the value; may be empty

    virtual ~argument_base() = default;
    virtual std::string type_name() const { return {}; }  // for the reference page
};

class object_base {
public:
    static constexpr std::uint32_t valid_tag = 0x75A8EC37;

    void* host_object;                // the enclosing host instance; null in a prototype
    std::uint32_t object_tag;         // valid_tag once a host instance encloses the object, else 0
    std::vector<inlet_base*> inlets;  // left to right
    std::vector<outlet_base*> outlets;  // left to right
    std::vector<argument_base*> arguments;
    ordered_map<message_base> messages;      // unchanged after construction: any thread may look up
    ordered_map<attribute_base> attributes;  // the same
    void* state_dictionary;                  // saved state of the instance
    bool owns_state_dictionary;              // made here, so freed here
    symbol class_symbol;  // the name that the host gave when it made the instance

    object_base();
    object_base(const object_base&) = delete;
    object_base& operator=(const object_base&) = delete;
    virtual ~object_base();

    virtual bool attributes_any_thread() const { return false; }  // writes are not deferred to main
    virtual bool capability_1() const { return false; }           // no effect here
    virtual bool capability_2() const { return false; }           // no effect here
    virtual bool capability_3() const { return false; }           // no effect here
    virtual bool any_thread_class() const { return false; }       // nor are messages
    virtual std::vector<std::string> class_options() const { return {}; }  // "multitouch"

    // What host calls get for this object: null unless a host instance encloses it.
    void* valid_host_object() const noexcept {
        return object_tag == valid_tag ? host_object : nullptr;
    }
};

// During its lifetime the next object_base built on this thread is enclosed by the given instance.
// A constructor can't be handed it, since the device class's own takes no arguments.
class enclosing_instance {
public:
    explicit enclosing_instance(void* host_object) noexcept;
    ~enclosing_instance();
    enclosing_instance(const enclosing_instance&) = delete;
    enclosing_instance& operator=(const enclosing_instance&) = delete;
};

}  // namespace kv7::ply
