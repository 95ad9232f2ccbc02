// The plugin as a host loads it, every control port wired to a float of its own.
#pragma once

#include <dlfcn.h>
#include <lv2/core/lv2.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "port_list.h"

namespace kv7::orv::lv2 {

inline const LV2_Descriptor* descriptor(std::uint32_t index) {
    void* const library = dlopen(VESK_LV2_BINARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<LV2_Descriptor_Function>(dlsym(library, "lv2_descriptor"))(index);
}

class LoadedPlugin {
public:
    explicit LoadedPlugin(double rate)
        : instance_(calls_.instantiate(&calls_, rate, "", no_features())) {
        if (instance_ == nullptr) throw std::runtime_error("no instance");
        for (const control_port port : controls)
            values.push_back(static_cast<float>(attribute_table[port.attribute].default_value));
        values.resize(values.size() + trigger_count, 0.0f);
        for (std::size_t i = 0; i < values.size(); ++i) connect(audio_port_count + i, &values[i]);
    }
    ~LoadedPlugin() { calls_.cleanup(instance_); }
    LoadedPlugin(const LoadedPlugin&) = delete;
    LoadedPlugin& operator=(const LoadedPlugin&) = delete;

    void activate() { calls_.activate(instance_); }
    void deactivate() {
        if (calls_.deactivate != nullptr) calls_.deactivate(instance_);
    }
    void connect(std::size_t port, float* data) {
        calls_.connect_port(instance_, static_cast<std::uint32_t>(port), data);
    }
    void run(std::size_t frames) { calls_.run(instance_, static_cast<std::uint32_t>(frames)); }

    float& at(const std::string& symbol) {
        for (std::size_t i = 0; i < controls.size(); ++i)
            if (symbol_of(controls[i]) == symbol) return values[i];
        for (std::size_t i = 0; i < trigger_count; ++i)
            if (symbol == trigger_names[i]) return values[controls.size() + i];
        throw std::out_of_range(symbol);
    }

    const std::vector<control_port> controls = control_ports();
    std::vector<float> values;  // of the controls, then of the triggers

private:
    static const LV2_Feature* const* no_features() {
        static const LV2_Feature* const none[] = {nullptr};
        return none;
    }

    const LV2_Descriptor& calls_ = *descriptor(0);
    LV2_Handle instance_;
};

}  // namespace kv7::orv::lv2
