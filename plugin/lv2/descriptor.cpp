// The plugin's C interface: lv2_descriptor, the only exported function, and the functions that its
// descriptor points to.
#include <lv2/core/lv2.h>
#include <lv2/urid/urid.h>

#include <cstdint>
#include <cstring>
#include <exception>

#include "inline_display.h"
#include "ported_effect.h"

namespace {

using kv7::orv::lv2::ported_effect;

ported_effect& effect(LV2_Handle instance) {
    return *static_cast<ported_effect*>(instance);
}

// What the host hands over for a feature; null: it lacks the feature.
template <class Data>
const Data* feature(const char* uri, const LV2_Feature* const* features) {
    for (; features != nullptr && *features != nullptr; ++features)
        if (std::strcmp((*features)->URI, uri) == 0)
            return static_cast<const Data*>((*features)->data);
    return nullptr;
}

LV2_Handle instantiate(const LV2_Descriptor*, double rate, const char*,
                       const LV2_Feature* const* features) {
    if (!(rate > 0.0)) return nullptr;
    try {
        return new ported_effect(
            rate, feature<LV2_URID_Map>(LV2_URID__map, features),
            feature<LV2_Inline_Display>(LV2_INLINEDISPLAY__queue_draw, features));
    } catch (const std::exception&) {
        return nullptr;  // the host reports the failure
    }
}

void connect_port(LV2_Handle instance, std::uint32_t port, void* data) {
    effect(instance).connect(port, data);
}

void activate(LV2_Handle instance) {
    effect(instance).activate();
}

void run(LV2_Handle instance, std::uint32_t frames) {
    effect(instance).run(frames);
}

void cleanup(LV2_Handle instance) {
    delete &effect(instance);
}

LV2_Inline_Display_Image_Surface* render(LV2_Handle instance, std::uint32_t width,
                                         std::uint32_t max_height) {
    return effect(instance).display().draw(width, max_height);
}

const void* extension_data(const char* uri) {
    static constexpr LV2_Inline_Display_Interface inline_display{render};
    return std::strcmp(uri, LV2_INLINEDISPLAY__interface) == 0 ? &inline_display : nullptr;
}

constexpr LV2_Descriptor descriptor{kv7::orv::lv2::plugin_uri,
                                    instantiate,
                                    connect_port,
                                    activate,
                                    run,
                                    nullptr,  // deactivate: activate resets all state
                                    cleanup,
                                    extension_data};

}  // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index) {
    return index == 0 ? &descriptor : nullptr;
}
