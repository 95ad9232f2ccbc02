#include "host_tempo.h"

#include <lv2/atom/util.h>
#include <lv2/time/time.h>

namespace kv7::orv::lv2 {

host_tempo::host_tempo(const LV2_URID_Map* map) : hears_(map != nullptr) {
    if (map == nullptr) return;
    const auto id = [map](const char* uri) { return map->map(map->handle, uri); };
    ids_ = {.object = id(LV2_ATOM__Object),
            .blank = id(LV2_ATOM__Blank),
            .number_int = id(LV2_ATOM__Int),
            .number_long = id(LV2_ATOM__Long),
            .number_float = id(LV2_ATOM__Float),
            .number_double = id(LV2_ATOM__Double),
            .position = id(LV2_TIME__Position),
            .beats_per_minute = id(LV2_TIME__beatsPerMinute),
            .beat_unit = id(LV2_TIME__beatUnit)};
}

// Hosts send them in any of four types.
std::optional<double> host_tempo::number_of(const LV2_Atom* atom) const noexcept {
    if (atom == nullptr) return {};
    const auto is = [atom](LV2_URID type, std::size_t size) {
        return atom->type == type && atom->size == size;
    };
    if (is(ids_.number_float, 4)) return reinterpret_cast<const LV2_Atom_Float*>(atom)->body;
    if (is(ids_.number_double, 8)) return reinterpret_cast<const LV2_Atom_Double*>(atom)->body;
    if (is(ids_.number_int, 4)) return reinterpret_cast<const LV2_Atom_Int*>(atom)->body;
    if (is(ids_.number_long, 8))
        return static_cast<double>(reinterpret_cast<const LV2_Atom_Long*>(atom)->body);
    return {};
}

void host_tempo::read(const LV2_Atom_Event& event) noexcept {
    if (!hears_ || (event.body.type != ids_.object && event.body.type != ids_.blank)) return;
    const auto& object = reinterpret_cast<const LV2_Atom_Object&>(event.body);
    if (object.body.otype != ids_.position) return;
    const LV2_Atom* bpm = nullptr;
    const LV2_Atom* unit = nullptr;
    lv2_atom_object_get(&object, ids_.beats_per_minute, &bpm, ids_.beat_unit, &unit, 0);
    // Within what keeps every note's length finite.
    const auto is_tempo = [](double x) { return x >= 1e-3 && x <= 1e6; };
    if (const auto now = number_of(bpm); now && is_tempo(*now)) beats_per_minute_ = *now;
    if (const auto now = number_of(unit); now && is_tempo(*now)) beat_unit_ = *now;
}

std::optional<double> host_tempo::bpm() const noexcept {
    if (beats_per_minute_ == 0.0) return {};
    return beats_per_minute_ * 4.0 / beat_unit_;
}

}  // namespace kv7::orv::lv2
