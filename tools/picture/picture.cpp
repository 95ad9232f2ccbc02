#include "tools/picture/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <optional>
#include <utility>

#include "tools/failure.h"
#include "tools/picture/canvas.h"
#include "tools/picture/time_axis.h"
#include "tools/text.h"

namespace program {

namespace {

constexpr int width = 1600;  // pixels
constexpr int height = 900;
constexpr area input_lane{84, 82, 1426, 54};
constexpr area flags_lane{84, 142, 1426, 46};
constexpr area output_lane{84, 194, 1426, 236};
constexpr area spectrum_lane{84, 448, 1426, 210};
constexpr area delay_lane{84, 676, 1426, 170};
constexpr double axis_y = 868;

constexpr double floor_db = -80;
constexpr double spectrum_floor_db = -100;
constexpr double end_db = -60;  // the tail is over where it stays below

constexpr colour paper{0.055, 0.065, 0.085};
constexpr colour lane{0.085, 0.100, 0.130};
constexpr colour grid{0.20, 0.23, 0.28};
constexpr colour ink{0.90, 0.92, 0.95};
constexpr colour faint{0.56, 0.61, 0.68};
constexpr colour grey{0.50, 0.55, 0.62};
constexpr colour left_colour{0.30, 0.78, 0.92};
constexpr colour right_colour{1.00, 0.62, 0.30};
constexpr colour flag{0.98, 0.83, 0.36};
constexpr double text_size = 13;

double db_of(double linear) {
    return 20 * std::log10(std::max(linear, 1e-9));
}

// Maps time to pixels.
struct time_scale {
    double seconds;  // at the right edge

    double x(double at) const { return output_lane.left + output_lane.width * at / seconds; }
    bool shows(double at) const { return at <= seconds; }
};

// Of a lane with left up and right down from its middle.
struct mirrored_scale {
    area where;
    double low;   // dB, in the middle
    double high;  // dB, at both edges

    double y(std::size_t side, double db) const {
        const double share = std::clamp((db - low) / (high - low), 0.0, 1.0);
        return where.middle() + (side == 0 ? -1 : 1) * share * where.height / 2;
    }
};

void draw_levels(canvas& draw, const time_scale& time, const mirrored_scale& scale,
                 const columns<level>& peaks, int rate, const std::array<colour, 2>& colours) {
    const double step = static_cast<double>(peaks.span()) / rate;
    for (std::size_t side = 0; side < 2; ++side) {
        if (peaks.all().empty()) continue;
        double at = 0;
        draw.point(time.x(0), scale.where.middle());
        for (const level& column : peaks.all()) {
            if (!time.shows(at)) break;
            const double y = scale.y(side, db_of(double{column.peak[side]}));
            draw.point(time.x(at), y);
            at += step;
            draw.point(time.x(std::min(at, time.seconds)), y);
        }
        draw.point(time.x(std::min(at, time.seconds)), scale.where.middle());
        draw.fill_path(colours[side]);
    }
}

void draw_level_axis(canvas& draw, const mirrored_scale& scale, double step) {
    for (std::size_t side = 0; side < 2; ++side)
        for (double db = std::floor(scale.high / step) * step; db > scale.low; db -= step) {
            const double y = scale.y(side, db);
            draw.line(scale.where.left, y, scale.where.right(), y,
                      db == 0 ? faint.with_opacity(0.7) : grid, db == 0 ? 1.2 : 1);
            draw.text(scale.where.left - 8, y + 4, number_text(db), faint, 11, align::right);
        }
    draw.line(scale.where.left, scale.where.middle(), scale.where.right(), scale.where.middle(),
              grid);
}

// The second line is the unit of the axis.
void name_lane(canvas& draw, const area& where, const std::string& name,
               const std::string& unit = "") {
    draw.text(10, where.top + 13, name, ink, text_size);
    draw.text(10, where.top + 28, unit, faint, 11);
}

void draw_sides(canvas& draw, const area& where) {
    draw.text(where.right() + 8, where.top + 14, "left", left_colour, text_size);
    draw.text(where.right() + 8, where.bottom() - 6, "right", right_colour, text_size);
}

// Dark blue over violet and orange to nearly white.
unsigned heat(double share) {
    constexpr std::array<colour, 6> stops{{{0.055, 0.065, 0.085},
                                           {0.13, 0.11, 0.33},
                                           {0.45, 0.12, 0.48},
                                           {0.83, 0.25, 0.35},
                                           {0.98, 0.62, 0.22},
                                           {1.0, 0.97, 0.78}}};
    const double at = std::clamp(share, 0.0, 1.0) * (stops.size() - 1);
    const auto i = std::min(static_cast<std::size_t>(at), stops.size() - 2);
    const double part = at - static_cast<double>(i);
    const auto mixed = [&](double colour::*channel) {
        const double x = stops[i].*channel + part * (stops[i + 1].*channel - stops[i].*channel);
        return static_cast<unsigned>(std::lround(255 * x));
    };
    return mixed(&colour::red) << 16 | mixed(&colour::green) << 8 | mixed(&colour::blue);
}

void draw_spectrum(canvas& draw, const time_scale& time, const spectrogram& spectrum, int rate) {
    constexpr area where = spectrum_lane;
    draw.fill(where, paper);
    const auto& all = spectrum.over_time().all();
    const std::int64_t span = spectrum.over_time().span();
    const double step = static_cast<double>(span) / rate;
    // Those of the time that is shown.
    const auto first = static_cast<std::size_t>(spectrum.lag() / span);
    const auto shown = static_cast<std::size_t>(std::ceil(time.seconds / step));
    const std::size_t count = all.size() > first ? std::min(all.size() - first, shown) : 0;
    if (count > 0) {
        constexpr std::size_t rows = spectrogram::row_count;
        std::vector<unsigned> pixels(count * rows);
        for (std::size_t x = 0; x < count; ++x)
            for (std::size_t y = 0; y < rows; ++y) {
                const float power = all[first + x].power[rows - 1 - y];
                const double db = 10 * std::log10(std::max(double{power}, 1e-12));
                pixels[y * count + x] = heat(1 - db / spectrum_floor_db);
            }
        const double end = time.x(step * static_cast<double>(count));
        draw.image({where.left, where.top, end - where.left, where.height}, static_cast<int>(count),
                   static_cast<int>(rows), pixels.data());
        draw.fill({where.right(), where.top, width - where.right(), where.height}, paper);
    }
    for (const double hz : {50.0, 100.0, 200.0, 500.0, 1000.0, 2000.0, 5000.0, 10000.0, 20000.0}) {
        const double share =
            std::log(hz / spectrogram::lowest) / std::log(spectrum.highest() / spectrogram::lowest);
        if (share > 1.0 + 1e-9) continue;
        const double y = where.bottom() - share * where.height;
        draw.line(where.left, y, where.right(), y, ink.with_opacity(0.10));
        draw.text(where.left - 8, y + 4, hz < 1000 ? number_text(hz) : number_text(hz / 1000) + "k",
                  faint, 11, align::right);
    }
    name_lane(draw, where, "freq.", "Hz");
    const area bar{where.right() + 10, where.top, 12, where.height};
    std::vector<unsigned> shades;
    for (int i = 0; i < 100; ++i) shades.push_back(heat(1 - i / 99.0));
    draw.image(bar, 1, 100, shades.data());
    for (double db = 0; db >= spectrum_floor_db; db -= 20)
        draw.text(bar.right() + 5, bar.top + 4 + bar.height * db / spectrum_floor_db,
                  number_text(db) + (db == 0 ? " dB" : ""), faint, 11);
}

struct range {
    double low, high;
};

// Of what the heads read while they were heard, with some room.
std::optional<range> delays_shown(const columns<read_delays>& delays, double step, double seconds) {
    range shown{1e9, 0};
    double at = 0;
    for (const read_delays& now : delays.all()) {
        if (at > seconds) break;
        at += step;
        for (const auto& head : now.head_side)
            for (const read_delay& read : head) {
                if (read.weight <= 0) continue;
                shown.low = std::min(shown.low, double{read.low});
                shown.high = std::max(shown.high, double{read.high});
            }
    }
    if (shown.high < shown.low) return {};
    const double room = std::max(0.08 * (shown.high - shown.low), 0.02 * shown.high + 1e-5);
    return range{std::max(0.0, shown.low - room), shown.high + room};
}

void draw_delays(canvas& draw, const time_scale& time, const columns<read_delays>* delays,
                 int rate) {
    constexpr area where = delay_lane;
    draw.fill(where, lane);
    const double step = delays == nullptr ? 0 : static_cast<double>(delays->span()) / rate;
    const auto shown = delays == nullptr ? std::nullopt : delays_shown(*delays, step, time.seconds);
    name_lane(draw, where, "delay", !shown ? "" : shown->high < 1 ? "ms" : "s");
    if (!shown) {
        draw.text(where.left + where.width / 2, where.middle(), "not known of this object", faint,
                  text_size, align::middle);
        return;
    }
    const auto y_of = [&](double seconds) {
        return where.bottom() - where.height * (seconds - shown->low) / (shown->high - shown->low);
    };
    const bool in_ms = shown->high < 1;
    const double unit = in_ms ? 1000 : 1;
    const double span = (shown->high - shown->low) * unit;
    const double power = std::pow(10, std::floor(std::log10(span / 5)));
    const double tick = power * (span / power <= 6    ? 1
                                 : span / power <= 12 ? 2
                                 : span / power <= 30 ? 5
                                                      : 10);
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(tick) - 1e-9)));
    for (double v = std::ceil(shown->low * unit / tick) * tick; v <= shown->high * unit;
         v += tick) {
        const double y = y_of(v / unit);
        draw.line(where.left, y, where.right(), y, grid);
        draw.text(where.left - 8, y + 4, fixed_text(v, decimals), faint, 11, align::right);
    }
    // The right side is thinner, so that both can be seen where they are equal.
    constexpr std::array<double, 2> thickness{3.0, 1.4};
    const auto draw_bar = [&](double x, double x_end, std::size_t side, const read_delay& read) {
        if (read.weight <= 0) return;
        const double top = y_of(double{read.high}) - thickness[side] / 2;
        const double bottom = y_of(double{read.low}) + thickness[side] / 2;
        draw.fill({x, top, x_end - x + 0.4, bottom - top},
                  (side == 0 ? left_colour : right_colour)
                      .with_opacity(std::min(1.0, double{read.weight})));
    };
    for (std::size_t side = 0; side < 2; ++side) {
        double at = 0;
        for (const read_delays& now : delays->all()) {
            if (!time.shows(at)) break;
            const double x = time.x(at);
            at += step;
            const double x_end = time.x(std::min(at, time.seconds));
            read_delay first = now.head_side[0][side], second = now.head_side[1][side];
            // While nothing changes both heads of a crossfade read the same.
            if (std::abs(y_of(double{first.low}) - y_of(double{second.low})) < 1 &&
                std::abs(y_of(double{first.high}) - y_of(double{second.high})) < 1) {
                first.weight += second.weight;
                second.weight = 0;
            }
            draw_bar(x, x_end, side, first);
            draw_bar(x, x_end, side, second);
        }
    }
    draw_sides(draw, where);
}

// A line through all lanes for each event, and its text where there is room for it.
void draw_flags(canvas& draw, const time_scale& time, const std::vector<picture_flag>& flags) {
    constexpr int row_count = 3;
    constexpr double row_height = flags_lane.height / row_count;
    constexpr double gap = 10;
    constexpr double widest = 420;
    // Those of one pixel share a flag.
    std::vector<std::pair<double, std::string>> at_pixels;
    for (const auto& [seconds, words] : flags) {
        if (!time.shows(seconds)) continue;
        const double x = std::floor(time.x(seconds)) + 0.5;
        if (!at_pixels.empty() && at_pixels.back().first == x)
            at_pixels.back().second += "   " + words;
        else
            at_pixels.emplace_back(x, words);
    }
    std::array<double, row_count> free_from{};
    free_from.fill(flags_lane.left);
    int untold = 0;
    for (const auto& [x, words] : at_pixels) {
        const auto row = std::find_if(free_from.begin(), free_from.end(),
                                      [at = x](double free) { return free <= at + 0.5; });
        draw.line(x, output_lane.top, x, delay_lane.bottom(), flag.with_opacity(0.35));
        const std::string shown = draw.shortened(words, 11, std::min(widest, width - 20 - x));
        if (row == free_from.end() || shown == "…") {
            ++untold;
            continue;
        }
        const double to_row =
            flags_lane.top + row_height * static_cast<double>(row - free_from.begin());
        const double length = draw.width_of(shown, 11) + 8;
        *row = x + length + gap;
        draw.line(x, to_row, x, output_lane.top, flag.with_opacity(0.5));
        draw.fill({x, to_row + 1, length, row_height - 2}, flag.with_opacity(0.16));
        draw.text(x + 4, to_row + row_height - 4, shown, flag, 11);
    }
    if (!flags.empty()) draw.text(10, flags_lane.top + 12, "events", flag, text_size);
    if (untold > 0) draw.text(10, flags_lane.top + 28, "+" + std::to_string(untold), flag, 11);
}

void draw_time_axis(canvas& draw, const time_scale& time) {
    double free_from = 0;
    for (const time_tick& tick : time_ticks(time.seconds)) {
        const double x = time.x(tick.seconds);
        draw.line(x, delay_lane.bottom(), x, delay_lane.bottom() + 6, faint);
        const double half = draw.width_of(tick.text, 12) / 2;
        if (x - half < free_from) continue;
        draw.text(x, axis_y, tick.text, faint, 12, align::middle);
        free_from = x + half + 12;
    }
}

// When the output was last above the level, in seconds; 0 for a silent one.
double last_above(const columns<level>& peaks, double db, int rate) {
    std::size_t end = peaks.all().size();
    while (end > 0 && db_of(std::max(double{peaks.all()[end - 1].peak[0]},
                                     double{peaks.all()[end - 1].peak[1]})) < db)
        --end;
    return static_cast<double>(end) * static_cast<double>(peaks.span()) / rate;
}

double peak_of(const columns<level>& peaks) {
    float peak = 0;
    for (const level& l : peaks.all()) peak = std::max({peak, l.peak[0], l.peak[1]});
    return peak;
}

}  // namespace

void picture::check_suffix(const std::string& file) {
    const std::string suffix = lower_case(std::filesystem::path(file).extension().string());
    if (suffix != ".svg" && suffix != ".png")
        throw usage_error("--picture " + file + ": expected suffix .png or .svg");
}

picture::picture(std::string file, int rate)
    : file_(std::move(file)), rate_(rate), spectrum_(rate) {}

void picture::add(const float* in, int channels, std::int64_t in_frames, const float* out,
                  std::int64_t frames) {
    input_.add(in, in_frames, static_cast<std::size_t>(channels));
    output_.add(out, frames, 2);
    spectrum_.add(out, frames);
    in_frames_ += in_frames;
    frames_ += frames;
}

void picture::write(const picture_texts& texts, const columns<read_delays>* delays) {
    spectrum_.finish();
    canvas draw(file_, width, height);
    draw.fill({0, 0, width, height}, paper);

    const double length = static_cast<double>(frames_) / rate_;
    const double input_end = static_cast<double>(in_frames_) / rate_;
    const double quiet_from = std::min(length, last_above(output_.over_time(), end_db, rate_));
    // Some room behind the end, as far as there is sound.
    const double end = std::min(length, 1.03 * std::max(quiet_from, input_end));
    const time_scale time{std::max(end, 1e-3)};
    const double peak = peak_of(output_.over_time());

    draw.text(output_lane.left, 34, texts.title, ink, 22);
    std::string facts = number_text(rate_ / 1000.0) + " kHz     peak " + dbfs_text(peak) +
                        " dBFS     tail " + fixed_text(length - input_end, 2) + " s";
    draw.text(output_lane.right(), 34, facts, ink, 15, align::right);
    draw.text(output_lane.left, 60, draw.shortened(texts.settings, text_size, output_lane.width),
              faint, text_size);

    draw.fill(input_lane, lane);
    const mirrored_scale input_scale{input_lane, -60, 0};
    draw_levels(draw, time, input_scale, input_.over_time(), rate_, {grey, grey});
    name_lane(draw, input_lane, "input");

    draw.fill(output_lane, lane);
    const double highest = std::max(0.0, 6 * std::ceil(db_of(peak) / 6));
    const mirrored_scale output_scale{output_lane, floor_db, highest};
    draw_levels(draw, time, output_scale, output_.over_time(), rate_, {left_colour, right_colour});
    draw_level_axis(draw, output_scale, 20);
    name_lane(draw, output_lane, "output", "dBFS");
    draw_sides(draw, output_lane);

    draw_spectrum(draw, time, spectrum_, rate_);
    draw_delays(draw, time, delays, rate_);
    draw_flags(draw, time, texts.flags);
    if (quiet_from < end && quiet_from > 0) {
        const double x = time.x(quiet_from);
        draw.line(x, output_lane.top, x, delay_lane.bottom(), faint, 1, true);
        draw.text(x - 5, output_lane.bottom() - 6, "under -60 dB", faint, 11, align::right);
    }
    draw_time_axis(draw, time);
    draw.write(file_);
}

}  // namespace program
