#include "tools/picture/picture_texts.h"

#include <cmath>

#include "tools/class_attributes.h"
#include "tools/presets.h"
#include "tools/text.h"

namespace program {

namespace {

// As one would type it: a choice by its name, a number without the digits of its conversion.
std::string text_of(const message& sent, const tesk::class_info& of_class) {
    std::string words = sent.selector;
    const tesk::attribute_info* const attribute = of_class.attribute(sent.selector);
    const value_attribute known =
        attribute != nullptr ? value_attribute_of(*attribute) : value_attribute{};
    for (const auto& atom : sent.values) {
        const double value =
            atom.type == 2 ? atom.value.as_float : static_cast<double>(atom.value.as_long);
        const auto index = static_cast<std::size_t>(value);
        if (known.kind == value_kind::choice && index < known.value_names.size())
            words += " " + known.value_names[index];
        else if (known.kind == value_kind::toggle)
            words += value != 0 ? " on" : " off";
        else
            words += " " + number_text(std::round(value * 1e4) / 1e4);
    }
    return words;
}

}  // namespace

picture_texts texts_of(const std::string& preset, const render_plan& plan,
                       const tesk::class_info& of_class) {
    picture_texts texts;
    texts.title = preset.empty() ? of_class.name : title_of_preset(preset).title;
    for (const message& setting : plan.settings)
        texts.settings += (texts.settings.empty() ? "" : "   ") + text_of(setting, of_class);
    for (const event& e : plan.events.events())
        texts.flags.push_back({e.seconds, text_of(e.what, of_class)});
    return texts;
}

}  // namespace program
