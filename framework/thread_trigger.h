// A base whose virtual operation the host runs once on the main thread, however often it is set.
#pragma once

#include <cstdint>
#include <string>

#include "framework/atoms.h"
#include "framework/qelem.h"

namespace kv7::ply {

template <class Baton, int Kind>
class thread_trigger;

template <>
class thread_trigger<void*, 3> {
public:
    explicit thread_trigger(void* baton);
    virtual ~thread_trigger() = default;  // cancels what is set
    virtual void callback() = 0;          // main thread
    virtual void push(const atoms&) = 0;
    thread_trigger(const thread_trigger&) = delete;
    thread_trigger& operator=(const thread_trigger&) = delete;

    void* baton;  // whom the callback acts on

private:
    qelem qelem_;
};

template <int Kind, int Threadsafety>
class outlet_queue;

// Nothing is ever sent through it: signal outlets carry no messages.
template <>
class outlet_queue<3, 0> final : public thread_trigger<void*, 3> {
public:
    outlet_queue() : thread_trigger(nullptr) {}
    void callback() override {}
    void push(const atoms&) override {}
};

}  // namespace kv7::ply
