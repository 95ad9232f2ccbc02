// Named functions of an object; each enters itself in its owner's table and is called by the host
// or by the device.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "framework/atoms.h"
#include "framework/message_queue.h"
#include "framework/object_base.h"

namespace kv7::ply {

using message_function = std::function<atoms(const atoms& values, int inlet)>;

class message_base {
public:
    object_base& owner;
    message_function function;  // needed at a call
    std::int32_t kind;          // a method_type
    symbol name;                // under which it is stored; "integer" is "int", "number" "float"
    std::string description;    // for the reference page

    // inlet -1: not yet found.
    virtual atoms call_one(const atom& value, int inlet = -1);
    virtual atoms call(const atoms& values, int inlet = -1) = 0;

    message_base(const message_base&) = delete;
    message_base& operator=(const message_base&) = delete;

protected:
    message_base(object_base* owner, const std::string& name, message_function function,
                 std::string description, std::int32_t kind);
    ~message_base() = default;
    int resolved(int inlet) const;
};

template <int Threadsafety>
class message;

// Runs its function on the thread that calls.
template <>
class message<2> final : public message_base {
public:
    message(object_base* owner, const std::string& name, message_function function,
            std::string description = {}, std::int32_t kind = type_any);
    atoms call(const atoms& values, int inlet = -1) override;
};

// A call on its way to the main thread.
struct deferred_message {
    message<0>* target = nullptr;
    atoms values;
    int inlet = -1;
};

// Runs its function on the main thread. A call on another thread is queued and answers nothing. It
// is dropped when three are queued already, or when another thread is queueing at that moment.
template <>
class message<0> final : public message_base {
public:
    message(object_base* owner, const std::string& name, message_function function,
            std::string description = {}, std::int32_t kind = type_any);
    atoms call(const atoms& values, int inlet = -1) override;  // any thread
    virtual ~message() = default;

private:
    static void run_deferred(void* host_object, tesk_symbol* target, std::int16_t count,
                             tesk_atom* values);  // main; takes one call out
    bool enqueue(const atoms& values, int inlet);
    message_queue<deferred_message> queue_{2};
    std::atomic_flag producing_;  // a thread is inside enqueue: the queue takes one producer
};

}  // namespace kv7::ply
