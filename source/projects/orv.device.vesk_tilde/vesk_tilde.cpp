#include "vesk_tilde.h"

#include <memory>
#include <string_view>
#include <variant>

#include "engine/sample_banks.h"
#include "setters.h"

using namespace kv7::orv;

vesk_tilde::vesk_tilde() : dsp_wrapper(sys_getsr()) {
    using orvane::blocks::vesk::SampleTableSet;
    core.rebuild_tables = [](orvane::blocks::vesk::Vesk& engine, float rate) {
        return std::make_shared<SampleTableSet>(engine, rate);
    };
    core.tables = core.rebuild_tables(*core.engine, static_cast<float>(sys_getsr()));
    for (std::size_t i = 0; i < attribute_count; ++i) add_attribute(i);
    add_ports({"left channel", "right channel"}, {"left channel", "right channel"});
}

void vesk_tilde::add_attribute(std::size_t index) {
    const attribute_row& row = attribute_table[index];
    const std::string_view name = row.info.name;
    const attribute_setter& any = attribute_setters[index];
    if (const auto* setter = std::get_if<choice_setter>(&any)) {
        // The host learns an enumeration's bounds from its type.
        if (name == "channel_mode") add<vesk::channel_mode>(row, *setter);
        if (name == "mod_waveform") add<vesk::waveform_mode>(row, *setter);
        if (name == "reverb_location") add<vesk::location_mode>(row, *setter);
        if (name == "drywetmode") add<vesk::dry_wet_mode>(row, *setter);
    }
    if (const auto* setter = std::get_if<continuous_setter>(&any)) add(row, *setter);
    if (const auto* setter = std::get_if<toggle_setter>(&any)) add(row, *setter);
    if (const auto* setter = std::get_if<list_setter>(&any)) add(row, *setter);
}
