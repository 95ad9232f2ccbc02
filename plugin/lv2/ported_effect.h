// The effect between a host's ports: a driver that learns its attributes from floats which the host
// writes between two blocks.
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

    // Between two blocks. data outlives the next run.
    void connect(std::size_t port, void* data) noexcept;

    // Not the audio thread. The next run begins with a fresh effect, its attributes as the ports
    // say from the first sample. Without memory for one the used effect goes on, reset.
    void activate() noexcept;

    // Audio thread; neither allocates nor locks. A block of any length: what the ports say acts at
    // its top. An output may be the memory of any input; an input that isn't finite counts as 0.
    void run(std::uint32_t frames);

private:
    // One port for a value, or two; further elements stay unused.
    struct attribute_ports {
        std::array<const float*, list_length> data{};
        std::array<float, list_length> seen{};  // at the last run
        std::size_t count = 0;

        bool take() noexcept;  // what the ports say now; true when it is news
    };
    struct trigger {
        const float* data = nullptr;
        bool held = false;  // at the last run

        bool take() noexcept;  // true when it has risen
    };

    std::array<double, list_length> values_of(std::size_t attribute) const noexcept;
    void land(std::size_t attribute) noexcept;
    void start();
    void take_changes();
    void play_piece(std::size_t begin, std::size_t frames);

    // Frames that the driver gets at a time, whatever the block.
    static constexpr std::size_t piece_frames = 64;

    double rate_;
    std::unique_ptr<vesk_driver> driver_;
    bool fresh_ = true;  // no run since the driver was built
    const std::vector<control_port> control_ports_ = lv2::control_ports();
    std::array<attribute_ports, attribute_count> attributes_;
    std::array<trigger, trigger_count> triggers_;
    std::array<float*, audio_port_count> audio_{};
    std::array<std::array<double, piece_frames>, 2> piece_{};  // left, right
};

}  // namespace kv7::orv::lv2
