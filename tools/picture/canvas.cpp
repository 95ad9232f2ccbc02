#include "tools/picture/canvas.h"

#include <cairo-svg.h>

#include <algorithm>
#include <filesystem>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/unfinished_file.h"

namespace program {

namespace {

cairo_status_t append(void* text, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

canvas::canvas(const std::string& file, int width, int height)
    : is_svg_(lower_case(std::filesystem::path(file).extension().string()) == ".svg"),
      surface_(is_svg_ ? cairo_svg_surface_create_for_stream(append, &svg_, width, height)
                       : cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
      draw_(cairo_create(surface_.get())) {
    cairo_select_font_face(draw_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
}

void canvas::use(const colour& c, double width) {
    cairo_set_source_rgba(draw_.get(), c.red, c.green, c.blue, c.opacity);
    cairo_set_line_width(draw_.get(), width);
}

void canvas::fill(const area& where, const colour& c) {
    use(c);
    cairo_rectangle(draw_.get(), where.left, where.top, where.width, where.height);
    cairo_fill(draw_.get());
}

void canvas::line(double x0, double y0, double x1, double y1, const colour& c, double width,
                  bool dashed) {
    use(c, width);
    const double dash = 4;
    cairo_set_dash(draw_.get(), &dash, dashed ? 1 : 0, 0);
    cairo_move_to(draw_.get(), x0, y0);
    cairo_line_to(draw_.get(), x1, y1);
    cairo_stroke(draw_.get());
    cairo_set_dash(draw_.get(), nullptr, 0, 0);
}

double canvas::width_of(const std::string& words, double size) {
    cairo_set_font_size(draw_.get(), size);
    cairo_text_extents_t extents;
    cairo_text_extents(draw_.get(), words.c_str(), &extents);
    return extents.x_advance;
}

std::string canvas::shortened(const std::string& words, double size, double width) {
    if (width_of(words, size) <= width) return words;
    std::string fitting = words;
    while (!fitting.empty() && width_of(fitting + "…", size) > width) {
        // Of UTF-8 the whole character.
        while (!fitting.empty() && (fitting.back() & 0xC0) == 0x80) fitting.pop_back();
        if (!fitting.empty()) fitting.pop_back();
    }
    return fitting + "…";
}

void canvas::text(double x, double y, const std::string& words, const colour& c, double size,
                  align how) {
    const double width = width_of(words, size);
    use(c);
    cairo_move_to(draw_.get(),
                  x - (how == align::left     ? 0
                       : how == align::middle ? width / 2
                                              : width),
                  y);
    cairo_show_text(draw_.get(), words.c_str());
}

void canvas::fill_path(const colour& c) {
    use(c);
    cairo_close_path(draw_.get());
    cairo_fill(draw_.get());
}

void canvas::stroke_path(const colour& c, double width) {
    use(c, width);
    cairo_set_line_join(draw_.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(draw_.get());
}

void canvas::image(const area& where, int width, int height, const unsigned* pixels) {
    const std::unique_ptr<cairo_surface_t, surface_closer> source(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    unsigned char* const bytes = cairo_image_surface_get_data(source.get());
    const int stride = cairo_image_surface_get_stride(source.get());
    for (int y = 0; y < height; ++y)
        std::copy_n(pixels + y * width, width, reinterpret_cast<unsigned*>(bytes + y * stride));
    cairo_surface_mark_dirty(source.get());
    cairo_save(draw_.get());
    cairo_rectangle(draw_.get(), where.left, where.top, where.width, where.height);
    cairo_clip(draw_.get());
    cairo_translate(draw_.get(), where.left, where.top);
    cairo_scale(draw_.get(), where.width / width, where.height / height);
    cairo_set_source_surface(draw_.get(), source.get(), 0, 0);
    cairo_pattern_set_extend(cairo_get_source(draw_.get()), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(draw_.get()), CAIRO_FILTER_BILINEAR);
    cairo_paint(draw_.get());
    cairo_restore(draw_.get());
}

void canvas::write(const std::string& file) {
    std::string bytes;
    cairo_status_t status = CAIRO_STATUS_SUCCESS;
    if (!is_svg_) status = cairo_surface_write_to_png_stream(surface_.get(), append, &bytes);
    cairo_surface_finish(surface_.get());
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface_.get());
    if (status != CAIRO_STATUS_SUCCESS)
        throw failure(file + ": can't be drawn: " + cairo_status_to_string(status));
    if (is_svg_) bytes.swap(svg_);
    unfinished_file out(file, true);
    out.write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    out.finish();
}

}  // namespace program
