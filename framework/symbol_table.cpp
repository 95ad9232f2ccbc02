#include "framework/symbol_table.h"

namespace kv7::ply {

namespace symbols {

const symbol empty{""};
const symbol saved_dictionary{"#D"};
const symbol preset{"_preset"};
const symbol box{"box"};
const symbol nobox{"nobox"};
const symbol float64{"float64"};
const symbol getname{"getname"};
const symbol gettype{"gettype"};
const symbol long_integer{"long"};
const symbol tesk{"tesk"};
const symbol modified{"modified"};
const symbol symbol_type{"symbol"};
const symbol value{"value"};

}  // namespace symbols

namespace {

// Interned for the host's sake only; nothing here refers to them again.
[[maybe_unused]] const symbol further_names[]{
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
[[maybe_unused]] const symbol theme_colors[]{
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
