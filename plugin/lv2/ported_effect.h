// Plays the effect from a host's ports: sets the driver's attributes to the values of the control
// ports at the start of every block.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "port_list.h"
#include "vesk_driver.h"

namespace kv7::orv::lv2 {

class ported_effect {
public:
    explicit ported_effect(double rate);  // Hz; throws std::bad_alloc

    // Between two blocks. data stays valid until the next run has returned; null: not connected. A
    // control that is not connected keeps its value, an input is silent, an output is dropped.
    void connect(std::size_t port, void* data) noexcept;

    // Not the audio thread. The next run starts with a new driver, whose attributes have the values
    // of the ports from the first sample. When there is no memory for one, the old one is reset.
    void activate() noexcept;

    // Audio thread; neither allocates nor locks. Blocks have any length; changed ports act at their
    // start. An output may share its memory with any input. Input that is not finite is taken as 0.
    void run(std::uint32_t frames);

private:
    // The ports of one attribute: one, or two of a list.
    struct attribute_ports {
        std::array<const float*, list_length> data{};
        std::array<float, list_length> values{};  // when last read
        std::size_t count = 0;

        bool read() noexcept;  // true when a value has changed
    };
    struct trigger {
        const float* data = nullptr;
        bool on = false;  // when last read

        bool read() noexcept;  // true on a change from off to on
    };

    std::array<double, list_length> values_of(std::size_t attribute) const noexcept;
    void set_without_ramp(std::size_t attribute) noexcept;
    void set_all();
    void set_changed();
    void process_sub_block(std::size_t begin, std::size_t frames);

    static constexpr std::size_t sub_block_frames = 64;  // at most; the last of a block is shorter

    double rate_;
    std::unique_ptr<vesk_driver> driver_;
    bool is_new_ = true;  // no run since the driver was built
    const std::vector<control_port> control_ports_ = lv2::control_ports();
    std::array<attribute_ports, attribute_count> attributes_;
    std::array<trigger, trigger_count> triggers_;
    std::array<float*, audio_port_count> audio_{};
    std::array<std::array<double, sub_block_frames>, 2> sub_block_{};  // left, right
};

}  // namespace kv7::orv::lv2
