// A small object for the tests of the program: it multiplies its input, with
// one attribute of each kind, so that what comes out can be said by hand. A
// variant of it can't be made.
#include <cstdio>
#include <iostream>
#include <random>
#include <stdexcept>

#include "framework/attributes.h"
#include "framework/class_registration.h"
#include "framework/messages.h"
#include "framework/ports.h"

using namespace kv7::ply;

enum class shape_kind : std::int32_t { round, very_square };

template <>
struct kv7::ply::enum_count<shape_kind> {
    static constexpr int value = 2;
};

class plain : public object<plain, 1>, public vector_operator<0> {
public:
    attribute<double, 2, limit::none, 2> gain{this, "gain", 1.0, {}};
    attribute<bool, 0, limit::none, 2> flip{this, "flip", false};
    // Square: the sign of the sound.
    attribute<shape_kind, 0, limit::none, 2> shape{
        this, "shape", shape_kind::round, {"Round", "Very square"}};
    // The number drawn when the object was made, 0 to 1, in place of the sound.
    attribute<bool, 0, limit::none, 2> dice{this, "dice", false};
    attribute<std::vector<double>, 0, limit::none, 2> pair{this, "pair", {1.0, 1.0}};
    // The next vector is silent.
    message<2> clear{this, "clear", [this](const atoms& values, int) {
                         cleared = true;
                         return values;
                     }};
    inlet<0> left{this, "left", "signal"}, right{this, "right", "signal"};
    outlet<3, 0> left_out{this, "left", "signal"}, right_out{this, "right", "signal"};
    bool cleared = false;
    double drawn = std::random_device{}() / 4294967296.0;

    plain() {
        skip_reference_page = 1;
#if defined(REFUSES)
        if (registered_class() != nullptr) throw std::runtime_error("no");
#endif
    }
    void operator()(signal_bundle in, signal_bundle out) override {
        for (std::size_t lane = 0; lane < 2; ++lane)
            for (std::int32_t i = 0; i < in.frame_count; ++i) {
                double x = in.channels[lane][i] * gain.stored() * pair.stored().at(lane);
                if (flip.stored()) x = -x;
                if (shape.stored() == shape_kind::very_square) x = x > 0 ? 1 : (x < 0 ? -1 : 0);
                if (dice.stored()) x = drawn;
                out.channels[lane][i] = cleared ? 0 : x;
            }
        cleared = false;
    }
};

extern "C" KV7_EXPORT void ext_main(void*) {
    std::puts("a line that an object prints while it loads");
    std::fflush(stdout);
    std::cerr.setstate(std::ios::failbit);  // says that there is no reference page yet
    register_class<plain>("plain_tilde.cpp");
    std::cerr.clear();
}
