// A value that moves to a new target in a linear ramp of 5 ms, one step a sample.
//
// Any thread may set it; the audio thread moves it. A set stores the value and marks it as pending,
// and the ramp starts on the audio thread, at the top of the next vector.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace kv7::orv {

constexpr double ramp_seconds = 0.005;

enum class ramp_state : std::int32_t { ramping = 1, idle = 2 };

struct smooth_value {
    // The ramp, in the attribute's own unit. Audio thread, or a rebuild that excludes it.
    double current;
    double target;
    double step = 0.0;            // per sample; negative when it falls
    std::uint64_t remaining = 0;  // steps left; 0: the ramp has ended
    std::uint64_t length = 0;     // samples given to the last ramp

    std::atomic<double> user_value;    // the clamped value last set: what the attribute reports
    std::atomic<bool> pending{false};  // set since the last scan
    std::atomic<bool>* any_pending = nullptr;  // set after pending, where a list shares it
    std::uint64_t ramp_samples = 0;  // length of a ramp at the present rate; 0 before there is one
    double low;
    double high;
    std::function<void(double)> setter;
    ramp_state state = ramp_state::idle;

    smooth_value(double value, double lowest, double highest, std::function<void(double)> set);

    // Any thread.
    void set_value(double x) noexcept;  // not a number counts as high
    void mark_pending() noexcept;       // ramps to user_value, whatever its latest value is

    // Audio thread, or a rebuild that excludes it.
    void take_pending() noexcept;
    void jump_to(double x);  // as set_value, but without a ramp: the setter gets it at once
    void ramp_to(double value, std::uint64_t samples) noexcept;
    // The values of the next samples, from the present one on, narrowed to 32 bits.
    void next_values(std::span<float> to) const noexcept;
    double value_after(std::uint64_t samples) const noexcept;
    void advance(std::uint64_t samples) noexcept;
    bool scan();                       // top of a vector: true while a ramp is to be run in it
    void rebuilt(double sample_rate);  // hands current to the setter; ramps have the new length
};

// The values of one object and those of them that ramp in the present vector.
class ramp_list {
public:
    struct entry {
        smooth_value* value;
        std::size_t attribute;  // the caller's index of it
    };

    // Before there is an audio thread; value outlives the list.
    void add(smooth_value& value, std::size_t attribute);

    // Audio thread.
    void scan();
    std::span<const entry> active() const noexcept { return active_; }
    void drop_ended() noexcept;  // from the active ones, until the next scan

    std::span<const entry> values() const noexcept { return all_; }

private:
    std::vector<entry> all_;
    std::vector<entry> active_;  // has room for all
    std::atomic<bool> any_pending_{false};
    bool all_idle_ = false;  // at the last scan
};

}  // namespace kv7::orv
