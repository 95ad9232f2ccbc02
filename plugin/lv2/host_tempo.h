// The tempo that the host tells of in its time:Position events.
#pragma once

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

#include <optional>

namespace kv7::orv::lv2 {

class host_tempo {
public:
    explicit host_tempo(const LV2_URID_Map* map);  // null: the host sends no events

    // Audio thread. What is no position, or has no tempo that is one, changes nothing; a stopped
    // transport keeps its tempo.
    void read(const LV2_Atom_Event& event) noexcept;

    // Quarter notes per minute, none before the first position.
    std::optional<double> bpm() const noexcept;

private:
    struct ids {
        LV2_URID object, blank, number_int, number_long, number_float, number_double;
        LV2_URID position, beats_per_minute, beat_unit;
    };
    std::optional<double> number_of(const LV2_Atom* atom) const noexcept;

    bool hears_ = false;
    ids ids_{};
    double beats_per_minute_ = 0.0;  // 0: not known yet
    double beat_unit_ = 4.0;         // a beat is 1 / beat_unit of a whole note
};

}  // namespace kv7::orv::lv2
