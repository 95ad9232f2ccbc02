// Turns a sample-by-sample engine into a signal object of the host.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "attribute_table.h"
#include "device_attributes.h"
#include "driver_core.h"
#include "framework/class_registration.h"
#include "framework/messages.h"
#include "framework/ports.h"
#include "framework/signal.h"

namespace kv7::orv {

// Device derives from this and adds its attributes, ports and tables in its constructor. Of Engine
// it needs the constructor, process, engine_clear and engine_reset.
template <class Device, class Engine, int Inlets, int Outlets>
class dsp_wrapper : public ply::object<dsp_wrapper<Device, Engine, Inlets, Outlets>, 1>,
                    public ply::vector_operator<0> {
public:
    // Audio thread.
    void operator()(ply::signal_bundle in, ply::signal_bundle out) override {
        core.perform({in.channels, in.channel_count, in.frame_count},
                     {out.channels, out.channel_count, out.frame_count});
    }

protected:
    explicit dsp_wrapper(double rate);  // Hz, of the first engine
    ~dsp_wrapper() override = default;

    // Each enters its attribute at the host; main thread, while Device is built.
    void add(const attribute_row& row, void (*setter)(Engine&, double));
    void add(const attribute_row& row, void (*setter)(Engine&, bool)) {
        add_queued<bool>(row, setter);
    }
    template <class Choice>
    void add(const attribute_row& row, void (*setter)(Engine&, std::int32_t)) {
        add_queued<Choice>(row, setter);
    }
    void add(const attribute_row& row, void (*setter)(Engine&, std::span<const double>)) {
        add_queued<std::vector<double>>(row, setter);
    }

    // One text for each port, left to right.
    void add_ports(const char* const (&inlet_texts)[Inlets],
                   const char* const (&outlet_texts)[Outlets]);

private:
    ply::atoms prepare(const ply::atoms& values);
    static ply::atoms require_host_version(const ply::atoms& values);
    void set_values_again();

    template <class T, class Setter>
    void add_queued(const attribute_row& row, Setter setter) {
        device_attributes_.push_back(std::make_unique<attribute<T, 0, limit::none>>(
            this, row, core.bind(setter), core.parameters));
    }

    ply::message<0> dspsetup_{this, "dspsetup",
                              [this](const ply::atoms& values, int) { return prepare(values); }};
    // No attribute is bound to an inlet, so a number changes nothing.
    ply::message<0> number_{this, "number", [](const ply::atoms& values, int) { return values; }};

protected:
    driver_core<Engine> core;

private:
    std::vector<std::unique_ptr<ply::inlet<0>>> input_ports_;
    std::vector<std::unique_ptr<ply::outlet<3, 0>>> output_ports_;
    ply::message<2> setup_{
        this, "setup", [](const ply::atoms& values, int) { return require_host_version(values); }};
    ply::message<2> reset_{this, "reset",
                           [this](const ply::atoms& values, int) {
                               core.request_reset();
                               return values;
                           },
                           "Reset"};
    std::vector<std::unique_ptr<attribute_base>> device_attributes_;
};

template <class Device, class Engine, int Inlets, int Outlets>
dsp_wrapper<Device, Engine, Inlets, Outlets>::dsp_wrapper(double rate) : core(rate) {
    core.set_values_again = [this] { set_values_again(); };
}

// The rate has been stored before "dspsetup" is called; the values only repeat it.
template <class Device, class Engine, int Inlets, int Outlets>
ply::atoms dsp_wrapper<Device, Engine, Inlets, Outlets>::prepare(const ply::atoms& values) {
    try {
        core.prepare(this->sample_rate());
    } catch (const std::exception& failure) {
        // The old engine, if there was one, plays on; the host still gets its perform routine.
        object_error(this->valid_host_object(), "%s", failure.what());
    }
    return values;
}

template <class Device, class Engine, int Inlets, int Outlets>
ply::atoms dsp_wrapper<Device, Engine, Inlets, Outlets>::require_host_version(
    const ply::atoms& values) {
    constexpr std::int16_t oldest = 0x900;
    if (static_cast<std::int16_t>(teskversion()) < oldest)
        throw std::runtime_error("Orvane DSP objects require Tesk 9 or later");
    return values;
}

template <class Device, class Engine, int Inlets, int Outlets>
void dsp_wrapper<Device, Engine, Inlets, Outlets>::set_values_again() {
    for (const auto& [name, value] : this->attributes) value->set(value->get(), true, false);
}

template <class Device, class Engine, int Inlets, int Outlets>
void dsp_wrapper<Device, Engine, Inlets, Outlets>::add(const attribute_row& row,
                                                       void (*setter)(Engine&, double)) {
    auto made = std::make_unique<smooth_attribute<0>>(this, row, core.bind(setter));
    core.ramps.add(made->value);
    device_attributes_.push_back(std::move(made));
}

template <class Device, class Engine, int Inlets, int Outlets>
void dsp_wrapper<Device, Engine, Inlets, Outlets>::add_ports(
    const char* const (&inlet_texts)[Inlets], const char* const (&outlet_texts)[Outlets]) {
    for (const char* text : inlet_texts)
        input_ports_.push_back(std::make_unique<ply::inlet<0>>(this, text, "signal"));
    for (const char* text : outlet_texts)
        output_ports_.push_back(std::make_unique<ply::outlet<3, 0>>(this, text, "signal"));
}

}  // namespace kv7::orv
