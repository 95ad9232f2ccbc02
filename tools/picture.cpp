#include "tools/picture.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <utility>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/unfinished_file.h"

namespace program {

namespace {

constexpr int width = 1200;       // pixels
constexpr int height = 420;       // pixels
constexpr double left_edge = 20;  // pixels, of the strips
constexpr double right_edge = 1180;
constexpr double top_edge = 20;
constexpr double strip_height = 170;
constexpr double strip_gap = 10;
constexpr double axis_y = top_edge + 2 * strip_height + strip_gap;
constexpr double min_level = 1;  // linear, at the edge of a strip; a higher peak raises it

struct colour {
    double red, green, blue, opacity;
};
constexpr colour paper{1, 1, 1, 1};
constexpr colour grey{0.72, 0.72, 0.72, 1};
constexpr colour blue{0.10, 0.38, 0.70, 0.75};
constexpr colour red{0.80, 0.20, 0.15, 0.6};
constexpr colour ink{0.2, 0.2, 0.2, 1};

struct surface_closer {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};
struct context_closer {
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
};

void use(cairo_t* draw, const colour& c) {
    cairo_set_source_rgba(draw, c.red, c.green, c.blue, c.opacity);
}

cairo_status_t write_bytes(void* file, const unsigned char* bytes, unsigned int count) {
    const bool complete = static_cast<unfinished_file*>(file)->write(bytes, count) == count;
    return complete ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

// 1, 2 or 5 times a power of ten, for about ten ticks.
double tick_step(double seconds) {
    const double power = std::pow(10, std::floor(std::log10(seconds / 10)));
    for (const double step : {1.0, 2.0, 5.0})
        if (step * power * 12 >= seconds) return step * power;
    return 10 * power;
}

// Maps time and level to pixels.
struct scale {
    double seconds;  // at the right edge
    double level;    // at the edge of a strip

    double x(double at) const {
        return left_edge + (right_edge - left_edge) * std::min(1.0, at / seconds);
    }
    double y(std::size_t channel, double sample) const {
        const double middle =
            top_edge + static_cast<double>(channel) * (strip_height + strip_gap) + strip_height / 2;
        return middle - strip_height / 2 * std::clamp(sample / level, -1.0, 1.0);
    }
};

// A closed outline along the maxima and back along the minima.
void draw_columns(cairo_t* draw, const scale& to, const peak_columns& columns, double rate) {
    const double step = static_cast<double>(columns.column_frames()) / rate;
    cairo_set_line_width(draw, 0.5);  // silence is a line
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const std::vector<peak_columns::column>& column = columns.channel(channel);
        for (std::size_t i = 0; i < column.size(); ++i)
            cairo_line_to(draw, to.x((static_cast<double>(i) + 0.5) * step),
                          to.y(channel, double{column[i].max}));
        for (std::size_t i = column.size(); i-- > 0;)
            cairo_line_to(draw, to.x((static_cast<double>(i) + 0.5) * step),
                          to.y(channel, double{column[i].min}));
        if (column.empty()) continue;
        cairo_close_path(draw);
        cairo_fill_preserve(draw);
        cairo_stroke(draw);
    }
}

void draw_axis(cairo_t* draw, const scale& to) {
    use(draw, ink);
    cairo_set_line_width(draw, 1);
    cairo_select_font_face(draw, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(draw, 11);
    const double step = tick_step(to.seconds);
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    for (int i = 0; i * step <= to.seconds; ++i) {
        const double x = to.x(i * step);
        cairo_move_to(draw, x, axis_y);
        cairo_line_to(draw, x, axis_y + 6);
        cairo_stroke(draw);
        cairo_move_to(draw, x + 3, axis_y + 18);
        cairo_show_text(draw, (fixed_text(i * step, decimals) + " s").c_str());
    }
    cairo_move_to(draw, left_edge, axis_y);
    cairo_line_to(draw, right_edge, axis_y);
    cairo_stroke(draw);
}

void draw_events(cairo_t* draw, const scale& to, const std::vector<event>& events) {
    use(draw, red);
    double last = -1;
    for (const event& e : events) {
        const double x = std::floor(to.x(e.seconds));
        if (e.seconds > to.seconds || x == last) continue;  // one mark a pixel
        cairo_rectangle(draw, x, top_edge, 1, axis_y - top_edge);
        last = x;
    }
    cairo_fill(draw);
}

}  // namespace

void peak_columns::merge_neighbours() {
    for (std::vector<column>& columns : channels_) {
        for (std::size_t i = 0; i < columns.size() / 2; ++i)
            columns[i] = {std::min(columns[2 * i].min, columns[2 * i + 1].min),
                          std::max(columns[2 * i].max, columns[2 * i + 1].max)};
        columns.resize(columns.size() / 2);
    }
    column_frames_ *= 2;
    last_frames_ = column_frames_;
}

void peak_columns::add(const float* interleaved, std::int64_t frames, std::size_t stride) {
    for (std::int64_t i = 0; i < frames; ++i, interleaved += stride) {
        if (last_frames_ == column_frames_ && channels_[0].size() == max_columns)
            merge_neighbours();
        const bool begins = channels_[0].empty() || last_frames_ == column_frames_;
        last_frames_ = begins ? 1 : last_frames_ + 1;
        for (std::size_t channel = 0; channel < channels_.size(); ++channel) {
            const float x = interleaved[std::min(channel, stride - 1)];
            if (begins) channels_[channel].push_back({x, x});
            column& last = channels_[channel].back();
            last = {std::min(last.min, x), std::max(last.max, x)};
        }
    }
}

float peak_columns::peak() const {
    float peak = 0;
    for (const std::vector<column>& columns : channels_)
        for (const column& c : columns) peak = std::max({peak, c.max, -c.min});
    return peak;
}

picture::picture(std::string file) : file_(std::move(file)) {
    const std::string suffix = lower_case(std::filesystem::path(file_).extension().string());
    is_svg_ = suffix == ".svg";
    if (!is_svg_ && suffix != ".png")
        throw usage_error("--picture " + file_ + ": expected suffix .png or .svg");
}

void picture::add(const float* in, int channels, std::int64_t in_frames, const float* out,
                  std::int64_t frames) {
    input_.add(in, in_frames, static_cast<std::size_t>(channels));
    output_.add(out, frames, 2);
}

void picture::write(int rate, std::int64_t frames, const score& events) const {
    unfinished_file bytes(file_, true);
    const std::unique_ptr<cairo_surface_t, surface_closer> surface(
        is_svg_ ? cairo_svg_surface_create_for_stream(write_bytes, &bytes, width, height)
                : cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    {
        const std::unique_ptr<cairo_t, context_closer> context(cairo_create(surface.get()));
        cairo_t* const draw = context.get();
        const scale to{std::max(1e-3, static_cast<double>(frames) / rate),
                       std::max({min_level, double{input_.peak()}, double{output_.peak()}})};
        use(draw, paper);
        cairo_paint(draw);
        cairo_set_antialias(draw, CAIRO_ANTIALIAS_GRAY);
        use(draw, grey);
        draw_columns(draw, to, input_, rate);
        use(draw, blue);
        draw_columns(draw, to, output_, rate);
        draw_events(draw, to, events.events());
        draw_axis(draw, to);
    }
    cairo_status_t status = CAIRO_STATUS_SUCCESS;
    if (!is_svg_) status = cairo_surface_write_to_png_stream(surface.get(), write_bytes, &bytes);
    cairo_surface_finish(surface.get());
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface.get());
    if (bytes.error() == 0 && status != CAIRO_STATUS_SUCCESS)
        throw failure(file_ + ": can't be drawn: " + cairo_status_to_string(status));
    bytes.finish();
}

}  // namespace program
