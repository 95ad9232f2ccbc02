// A driver behind the unit interface, with VESK_UNIT_SETTINGS in force; 64-bit vectors as the
// object runs them.
#include "unit.h"

#include <cstddef>
#include <vector>

#include "settings.h"

namespace {

struct unit {
    kv7::orv::vesk_driver driver;
    std::vector<double> left, right;

    unit(double rate, int max_block)
        : driver(rate),
          left(static_cast<std::size_t>(max_block)),
          right(static_cast<std::size_t>(max_block)) {
        kv7::orv::apply(driver, kv7::orv::VESK_UNIT_SETTINGS());
        driver.prepare(rate);
    }
};

}  // namespace

void* unit_create(double sample_rate, int max_block) {
    return new unit(sample_rate, max_block);
}

void unit_process(void* made, const float* in_l, const float* in_r, float* out_l, float* out_r,
                  int frames) {
    unit& u = *static_cast<unit*>(made);
    const auto n = static_cast<std::size_t>(frames);
    for (std::size_t i = 0; i < n; ++i) {
        u.left[i] = static_cast<double>(in_l[i]);
        u.right[i] = static_cast<double>(in_r[i]);
    }
    double* const channels[2] = {u.left.data(), u.right.data()};
    const kv7::orv::signal_bundle bundle{channels, 2, frames};
    u.driver.core.perform(bundle, bundle);
    for (std::size_t i = 0; i < n; ++i) {
        out_l[i] = static_cast<float>(u.left[i]);
        out_r[i] = static_cast<float>(u.right[i]);
    }
}

void unit_destroy(void* made) {
    delete static_cast<unit*>(made);
}
