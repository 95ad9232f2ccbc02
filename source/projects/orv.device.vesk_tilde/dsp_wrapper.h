// Turns a sample-by-sample engine into a signal object of the host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <variant>
#include <vector>

#include "attribute_row.h"
#include "device_attributes.h"
#include "driver_core.h"
#include "framework/class_registration.h"
#include "framework/guarded.h"
#include "framework/messages.h"
#include "framework/ports.h"
#include "framework/signal.h"
#include "sample_rate.h"

namespace kv7::orv {

// Device derives from this and adds its attributes, ports and tables in its constructor. Of Engine
// it needs the constructor, process, engine_clear and engine_reset.
template <class Device, class Engine, int Inlets, int Outlets>
class dsp_wrapper : public ply::object<dsp_wrapper<Device, Engine, Inlets, Outlets>, 1>,
                    public ply::vector_operator<0> {
public:
    using described_class = Device;

    // Audio thread.
    void operator()(ply::signal_bundle in, ply::signal_bundle out) override {
        core.perform({in.channels, in.channel_count, in.frame_count},
                     {out.channels, out.channel_count, out.frame_count});
    }

protected:
    // rate in Hz, of the first engine. rows: the attributes, in the order of registration; they
    // outlive this.
    dsp_wrapper(double rate, std::span<const attribute_row> rows);
    ~dsp_wrapper() override = default;

    // Main thread, while Device is built.
    void add_attributes();
    // One text for each port, left to right.
    void add_ports(const char* const (&inlet_texts)[Inlets],
                   const char* const (&outlet_texts)[Outlets]);

    // The host's sample rate. One that is not accepted is reported and replaced: without a rate the
    // object could not be made, and "dsp64" brings the real one before the first vector.
    static double host_sample_rate();

private:
    ply::atoms prepare(const ply::atoms& values);
    static ply::atoms require_host_version(const ply::atoms& values);
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
    std::span<const attribute_row> rows_;
    std::vector<std::unique_ptr<attribute_base>> device_attributes_;  // in the order of rows
};

template <class Device, class Engine, int Inlets, int Outlets>
dsp_wrapper<Device, Engine, Inlets, Outlets>::dsp_wrapper(double rate,
                                                          std::span<const attribute_row> rows)
    : core(rate, rows), rows_(rows) {
    core.restore_values = [this] {
        for (const auto& each : device_attributes_) each->restore();
    };
}

// The rate has been stored before "dspsetup" is called; the values only repeat it.
template <class Device, class Engine, int Inlets, int Outlets>
ply::atoms dsp_wrapper<Device, Engine, Inlets, Outlets>::prepare(const ply::atoms& values) {
    try {
        core.prepare(this->sample_rate());
    } catch (const std::exception& failure) {
        // The old engine, if there was one, plays on; the host still gets the perform routine.
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
double dsp_wrapper<Device, Engine, Inlets, Outlets>::host_sample_rate() {
    const double rate = sys_getsr();
    if (is_sample_rate(rate)) return rate;
    ply::guarded([rate] { require_sample_rate(rate); });  // reports it
    return fallback_sample_rate;
}

template <class Device, class Engine, int Inlets, int Outlets>
void dsp_wrapper<Device, Engine, Inlets, Outlets>::add_attributes() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const attribute_row& row = rows_[i];
        // The type of the setter's value is the attribute's.
        device_attributes_.push_back(std::visit(
            [&](const auto& setter) -> std::unique_ptr<attribute_base> {
                using Value = setter_value<std::remove_cvref_t<decltype(setter)>>;
                if constexpr (std::is_same_v<Value, double>)
                    return std::make_unique<smooth_attribute<0>>(this, row, core.ramp_of(i));
                else if constexpr (std::is_same_v<Value, std::span<const double>>)
                    return std::make_unique<attribute<std::vector<double>, 0, limit::none>>(
                        this, core, row, i);
                else
                    return std::make_unique<attribute<Value, 0, limit::none>>(this, core, row, i);
            },
            row.setter));
    }
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
