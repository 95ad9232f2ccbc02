#include "vesk_driver.h"

#include <memory>

#include "engine/sample_banks.h"

namespace kv7::orv {

vesk_driver::vesk_driver(double rate) : core(rate, attribute_table) {
    using orvane::blocks::vesk::SampleTableSet;
    core.rebuild_tables = [](orvane::blocks::vesk::Vesk& engine, float at) {
        return std::make_shared<SampleTableSet>(engine, at);
    };
    // The default of a queued attribute reaches the engine as every later value, by the queue.
    for (std::size_t i = 0; i < attribute_count; ++i)
        if (attribute_table[i].kind != attribute_kind::continuous) core.restore(i);
}

void vesk_driver::start() {
    double* const channels[2] = {};
    const signal_bundle no_frames{channels, 2, 0};
    core.perform(no_frames, no_frames);  // takes the changes
    core.request_reset();                // in their place the read heads start
}

}  // namespace kv7::orv
