#include "framework/symbol_table.h"

#include <initializer_list>

namespace kv7::ply {

namespace symbols {

// From gensym's answer as it is: an exception while the file loads would end the host.
symbol empty{gensym("")};
symbol saved_dictionary{gensym("#D")};
symbol preset{gensym("_preset")};
symbol box{gensym("box")};
symbol nobox{gensym("nobox")};
symbol float64{gensym("float64")};
symbol getname{gensym("getname")};
symbol gettype{gensym("gettype")};
symbol long_integer{gensym("long")};
symbol tesk{gensym("tesk")};
symbol modified{gensym("modified")};
symbol symbol_type{gensym("symbol")};
symbol value{gensym("value")};

void intern_missing() {
    struct entry {
        symbol& interned;
        const char* text;
    };
    const entry entries[]{{empty, ""},          {saved_dictionary, "#D"}, {preset, "_preset"},
                          {box, "box"},         {nobox, "nobox"},         {float64, "float64"},
                          {getname, "getname"}, {gettype, "gettype"},     {long_integer, "long"},
                          {tesk, "tesk"},       {modified, "modified"},   {symbol_type, "symbol"},
                          {value, "value"}};
    for (const entry& e : entries)
        if (e.interned.interned() == nullptr) e.interned = symbol(e.text);
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
