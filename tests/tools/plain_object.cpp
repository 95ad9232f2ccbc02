// A small object for the tests of the program: it multiplies its input, with one attribute of each
// kind, so that what comes out can be said by hand. Its variants fail in the ways objects fail.
#include <cstddef>
#include <cstdio>
#include <random>

#include "framework/host_interface.h"

namespace {

tesk_class* plain_class = nullptr;

struct plain {
    tesk_signal_object header;
    double gain;         // of both lanes
    double pair[2];      // of the left, of the right
    std::int64_t flip;   // 1: both lanes are inverted
    std::int64_t shape;  // 1: the output is the sign of the sound
    std::int64_t dice;   // 1: the output is the number drawn when the object was made
    double drawn;        // 0 to 1
    bool cleared;        // until the end of the next vector the output is 0
};

void perform(void* self, void*, double** in, std::int64_t, double** out, std::int64_t,
             std::int64_t frames, std::int64_t, void*) {
    plain& object = *static_cast<plain*>(self);
    for (int lane = 0; lane < 2; ++lane)
        for (std::int64_t i = 0; i < frames; ++i) {
            double x = in[lane][i] * object.gain * object.pair[lane];
            if (object.flip != 0) x = -x;
            if (object.shape == 1) x = x > 0 ? 1 : (x < 0 ? -1 : 0);
            if (object.dice != 0) x = object.drawn;
            out[lane][i] = object.cleared ? 0 : x;
        }
    object.cleared = false;
}

void dsp64(void* self, void* chain, const std::int16_t*, double, std::int64_t, std::int64_t) {
    tesk_symbol* const add = gensym("dsp_add64");
    void* const object = object_method_direct_getobject(chain, add);
    reinterpret_cast<tesk_dsp_add>(object_method_direct_getmethod(chain, add))(object, self,
                                                                               perform, 0, nullptr);
}

void clear(void* self, tesk_symbol*, std::int64_t, tesk_atom*) {
    static_cast<plain*>(self)->cleared = true;
}

void secret(void*) {}

std::int64_t no_value(void*, void*, std::int64_t*, tesk_atom**) {
    return 1;
}

template <auto member>
std::int64_t set_number(void* self, void*, std::int64_t count, tesk_atom* values) {
    if (count > 0) static_cast<plain*>(self)->*member = atom_getfloat(values);
    return 0;
}

template <auto member>
std::int64_t set_index(void* self, void*, std::int64_t count, tesk_atom* values) {
    if (count > 0) static_cast<plain*>(self)->*member = atom_getlong(values);
    return 0;
}

std::int64_t set_pair(void* self, void*, std::int64_t count, tesk_atom* values) {
    for (std::int64_t i = 0; i < 2 && count > 0; ++i)
        static_cast<plain*>(self)->pair[i] = atom_getfloat(values + (i < count ? i : count - 1));
    return 0;
}

void* make(tesk_symbol*, std::int64_t count, tesk_atom* values) {
    plain* const made = static_cast<plain*>(object_alloc(plain_class));
    made->gain = made->pair[0] = made->pair[1] = 1;
    made->drawn = std::random_device{}() / 4294967296.0;
#if defined(REFUSES)
    object_error(nullptr, "This object requires Tesk 12 or later");
    return nullptr;
#endif
    z_dsp_setup(made, 2);
    outlet_new(made, "signal");
    outlet_new(made, "signal");
    attr_args_process(made, static_cast<std::int16_t>(count), values);
    return made;
}

void add_attribute(const char* name, const char* type, tesk_setter setter, const char* style,
                   const char* values) {
    tesk_symbol* const symbol = gensym("symbol");
    class_addattr(plain_class, attr_offset_new(name, gensym(type), 0, no_value, setter, 0));
    if (*style != '\0') class_attr_addattr_parse(plain_class, name, "style", symbol, 0, style);
    if (*values != '\0')
        class_attr_addattr_parse(plain_class, name, "enumvals", gensym("atom"), 0, values);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void ext_main(void*) {
    std::puts("a line that an object prints while it loads");
    std::fflush(stdout);
    plain_class = class_new("plain~", make, nullptr, sizeof(plain), nullptr, 8, 0);
    class_addmethod(plain_class, reinterpret_cast<tesk_method>(dsp64), "dsp64", 9, 0);
    class_addmethod(plain_class, reinterpret_cast<tesk_method>(clear), "clear", 8, 0);
    class_addmethod(plain_class, reinterpret_cast<tesk_method>(secret), "secret", 9, 0);
    add_attribute("gain", "float64", set_number<&plain::gain>, "", "");
    add_attribute("flip", "long", set_index<&plain::flip>, "onoff", "");
    add_attribute("shape", "long", set_index<&plain::shape>, "enumindex",
                  "\"Round\" \"Very square\"");
    add_attribute("dice", "long", set_index<&plain::dice>, "onoff", "");
    class_addattr(plain_class,
                  attr_offset_array_new("pair", gensym("float64"), 2, 0, no_value, set_pair, 0, 0));
    class_dspinit(plain_class);
    class_register(gensym("box"), plain_class);
}
