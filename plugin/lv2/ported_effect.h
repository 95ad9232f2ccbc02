// Plays the effect from a host's ports: sets the driver's attributes to what the control ports and
// the tempo call for at the start of every block.
#pragma once

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "bypass.h"
#include "echo_display.h"
#include "host_tempo.h"
#include "port_list.h"
#include "vesk_driver.h"

namespace kv7::orv::lv2 {

class ported_effect {
public:
    // rate in Hz; map and display may be null. Throws std::bad_alloc.
    ported_effect(double rate, const LV2_URID_Map* map, const LV2_Inline_Display* display);

    // Between two blocks. data stays valid until the next run has returned; null: not connected. A
    // control that is not connected keeps its value, an input is silent, an output is dropped.
    void connect(std::size_t port, void* data) noexcept;

    // Not the audio thread. The next run starts with a new driver, whose attributes have the values
    // of the ports from the first sample. When there is no memory for one, the old one is reset.
    void activate() noexcept;

    // Audio thread; neither allocates nor locks. Blocks have any length; changed ports act at their
    // start, a tempo at its frame. An output may share its memory with any input. Input that is not
    // finite is taken as 0.
    void run(std::uint32_t frames);

    // The host's graphics thread.
    echo_display& display() noexcept { return display_; }

private:
    using attribute_values = std::array<double, list_length>;

    // On at every press: when it rises, and when a host that has latched it lets it fall. A press
    // of a button that springs back is shorter than latched_seconds and acts once.
    struct trigger {
        static constexpr double latched_seconds = 1.0;
        const float* data = nullptr;
        bool on = false;         // when last read
        double frames_on = 0.0;  // so far

        bool read(double block_frames, double rate) noexcept;  // true: act
    };

    double own(own_control which) const noexcept { return values_[own_[which]]; }
    bool is_on(own_control which) const noexcept { return own(which) > 0.0; }
    double seconds_of(own_control division) const noexcept;
    attribute_values delays() const noexcept;
    attribute_values values_of(std::size_t attribute) const noexcept;

    void read_controls() noexcept;
    void start();
    void set_changed();
    void run_to(std::size_t begin, std::size_t end);
    void process_sub_block(std::size_t begin, std::size_t frames);
    void write_readouts(std::size_t frames) noexcept;
    void show_echoes(std::size_t frames) noexcept;

    static constexpr std::size_t sub_block_frames = 64;  // at most; the last of a block is shorter

    double rate_;
    std::unique_ptr<vesk_driver> driver_;
    bool is_new_ = true;  // no run since the driver was built
    host_tempo tempo_;
    bypass bypass_;
    echo_display display_;
    std::vector<const float*> controls_;  // in the order of control_ports
    std::vector<double> values_;          // of these, when last read
    std::array<std::array<std::size_t, list_length>, attribute_count> elements_{};  // in values_
    std::array<std::size_t, own_control_count> own_{};                              // in values_
    std::array<attribute_values, attribute_count> sent_{};                          // to the driver
    std::array<trigger, trigger_count> triggers_;
    std::array<float*, readout_count> readouts_{};
    const LV2_Atom_Sequence* events_ = nullptr;
    std::array<float*, audio_port_count> audio_{};
    std::array<float, 2> peaks_{};  // of the block so far; left, right
    std::array<std::array<double, sub_block_frames>, 2> sub_block_{};  // left, right
    std::array<std::array<double, sub_block_frames>, 2> dry_{};        // what passes the effect by
};

}  // namespace kv7::orv::lv2
