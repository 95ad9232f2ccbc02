#include "framework/symbol_table.h"

#include <algorithm>
#include <initializer_list>

namespace kv7::ply {

namespace symbols {

// From gensym's answer as it is: an exception while the file loads would end the host.
const symbol empty{gensym("")};
const symbol saved_dictionary{gensym("#D")};
const symbol preset{gensym("_preset")};
const symbol box{gensym("box")};
const symbol nobox{gensym("nobox")};
const symbol float64{gensym("float64")};
const symbol getname{gensym("getname")};
const symbol gettype{gensym("gettype")};
const symbol long_integer{gensym("long")};
const symbol tesk{gensym("tesk")};
const symbol modified{gensym("modified")};
const symbol symbol_type{gensym("symbol")};
const symbol value{gensym("value")};

bool all_interned() noexcept {
    const auto all = {empty,   saved_dictionary, preset, box,      nobox,       float64, getname,
                      gettype, long_integer,     tesk,   modified, symbol_type, value};
    return std::none_of(all.begin(), all.end(),
                        [](const symbol& s) { return s.interned() == nullptr; });
}

}  // namespace symbols

namespace {

// Interns names for the host's sake only; nothing here refers to them again.
struct interned_names {
    interned_names(std::initializer_list<const char*> names) noexcept {
        for (const char* name : names) gensym(name);
    }
};

const interned_names further_names{
    "#B",
    "#P",
    "attr_modified",
    "bang",
    "binding",
    "buffer_modified",
    "float",
    "float32",
    "getmatrix",
    "globalsymbol_binding",
    "globalsymbol_unbinding",
    "list",
    "selection",
    "size",
    "time",
    "unbinding",
};

// The host's theme colours, which an attribute's `color` may name.
const interned_names theme_colors{
    "active_automation",
    "assignment_text_bg",
    "contrast_frame",
    "control_bg",
    "control_fg",
    "control_fg_off",
    "control_fg_off_zombie",
    "control_fg_on",
    "control_fg_on_zombie",
    "control_fg_zombie",
    "control_fill_handle",
    "control_selection",
    "control_text_bg",
    "control_text_selection",
    "control_text_zombie",
    "control_zombie",
    "dial_fg",
    "dial_fg_zombie",
    "dial_needle",
    "dial_needle_zombie",
    "dial_triangle",
    "focus_frame",
    "freeze_color",
    "gain_reduction_line_color",
    "inactive_automation",
    "input_curve_color",
    "input_curve_outline_color",
    "key_assignment",
    "lcd_bg",
    "lcd_control_fg",
    "lcd_control_fg_alt",
    "lcd_control_fg_zombie",
    "lcd_frame",
    "led_bg",
    "macro_assigned",
    "macro_assignment",
    "macro_title",
    "meter_bg",
    "midi_assignment",
    "numbox_triangle",
    "output_curve_color",
    "output_curve_outline_color",
    "retro_display_scale_text",
    "spectrum_alternative_color",
    "spectrum_default_color",
    "spectrum_grid_lines",
    "surface_bg",
    "surface_frame",
    "threshold_line_color",
    "value_arc",
    "value_arc_zombie",
    "value_bar",
};

}  // namespace

}  // namespace kv7::ply
