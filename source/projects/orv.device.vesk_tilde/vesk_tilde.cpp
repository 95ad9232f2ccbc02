#include "vesk_tilde.h"

#include <memory>

#include "attribute_table.h"
#include "engine/sample_banks.h"

using namespace kv7::orv;

vesk_tilde::vesk_tilde() : dsp_wrapper(host_sample_rate(), attribute_table) {
    using orvane::blocks::vesk::SampleTableSet;
    core.rebuild_tables = [](orvane::blocks::vesk::Vesk& engine, float rate) {
        return std::make_shared<SampleTableSet>(engine, rate);
    };
    core.tables = core.rebuild_tables(*core.engine, core.engine->sample_rate);
    add_attributes();
    add_ports({"left channel", "right channel"}, {"left channel", "right channel"});
}
