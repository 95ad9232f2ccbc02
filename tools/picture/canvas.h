// Draws shapes and texts into an image, by cairo.
#pragma once

#include <cairo.h>

#include <memory>
#include <string>

namespace program {

struct colour {
    double red, green, blue;
    double opacity = 1;

    colour with_opacity(double share) const { return {red, green, blue, opacity * share}; }
};

// A rectangle in pixels; y grows downwards.
struct area {
    double left, top, width, height;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
    double middle() const { return top + height / 2; }
};

enum class align { left, middle, right };

class canvas {
public:
    canvas(const std::string& file, int width, int height);  // suffix .svg, else a PNG

    void fill(const area& where, const colour& c);
    void line(double x0, double y0, double x1, double y1, const colour& c, double width = 1,
              bool dashed = false);
    // y: of the text's base line.
    void text(double x, double y, const std::string& words, const colour& c, double size,
              align how = align::left);
    double width_of(const std::string& words, double size);
    // As many of its characters as fit, with an ellipsis where some don't.
    std::string shortened(const std::string& words, double size, double width);

    // A path of points, each at x and y; fill_path closes it.
    void point(double x, double y) { cairo_line_to(draw_.get(), x, y); }
    void fill_path(const colour& c);
    void stroke_path(const colour& c, double width);

    // Pixels of one colour each, row by row from the top, 0xRRGGBB; stretched over the area.
    void image(const area& where, int width, int height, const unsigned* pixels);

    void write(const std::string& file);  // replaces one that is there; throws failure

private:
    struct surface_closer {
        void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    };
    struct context_closer {
        void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    };

    void use(const colour& c, double width = 1);

    bool is_svg_;
    std::string svg_;  // what the library has written so far
    std::unique_ptr<cairo_surface_t, surface_closer> surface_;
    std::unique_ptr<cairo_t, context_closer> draw_;
};

}  // namespace program
