// The inlets and outlets of an object, which enter themselves in their owner from left to right.
#pragma once

#include <cstdint>
#include <string>

#include "framework/object_base.h"
#include "framework/thread_trigger.h"

namespace kv7::ply {

struct port {
    object_base& owner;
    std::string description;             // shown when the pointer rests on the port
    std::string type;                    // "signal"
    bool has_signal_connection = false;  // set by "dsp64"

    port(const port&) = delete;
    port& operator=(const port&) = delete;

protected:
    port(object_base* owner, std::string description, std::string type);
    ~port() = default;
};

class inlet_base : public port {
public:
    virtual ~inlet_base() = default;
    virtual bool has_target() const = 0;
    virtual void* target() const = 0;

protected:
    inlet_base(object_base* owner, std::string description, std::string type);
};

class outlet_base : public port {
public:
    virtual ~outlet_base() = default;
    virtual void create() = 0;  // makes the host's outlet, which the host keeps; throws

protected:
    outlet_base(object_base* owner, std::string description, std::string type);
};

template <int Threadsafety>
class inlet;

template <>
class inlet<0> final : public inlet_base {
public:
    inlet(object_base* owner, std::string description, std::string type = {});
    bool has_target() const override { return target_ != nullptr; }
    void* target() const override { return target_; }

    void* instance = nullptr;  // the host's proxy: none in a signal class

private:
    void* target_ = nullptr;
};

template <int Kind, int Threadsafety>
class outlet;

template <>
class outlet<3, 0> final : public outlet_base {
public:
    outlet(object_base* owner, std::string description, std::string type = {});
    void create() override;

    void* instance = nullptr;  // the host's outlet

private:
    atoms accumulated_;
    outlet_queue<3, 0> queue_;
};

}  // namespace kv7::ply
