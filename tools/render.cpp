#include "tools/render.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <memory>

#include "tools/effect.h"
#include "tools/failure.h"
#include "tools/input_file.h"
#include "tools/output_file.h"
#include "tools/package.h"
#include "tools/picture.h"
#include "tools/player.h"
#include "tools/presets.h"
#include "tools/progress.h"
#include "tools/score.h"
#include "tools/seed.h"
#include "tools/tail.h"
#include "tools/text.h"

namespace program {

namespace {

namespace fs = std::filesystem;

void warn(const std::string& text) {
    std::cerr << "render: " << one_line(text) << std::endl;
}

void check_place(const std::string& place, const render_order& order) {
    std::error_code failed;
    const fs::file_status status = fs::status(place, failed);
    if (!fs::exists(status)) return;
    if (fs::is_directory(status)) throw failure(place + ": is a folder, expected a file to write");
    if (!fs::is_regular_file(status))
        throw failure(place + ": is no ordinary file, expected a file to write");
    if (order.input != "-" && fs::equivalent(order.input, place, failed))
        throw usage_error(place + ": is INPUT too, expected another file");
    if (!order.force) throw failure(place + ": is there already, expected --force");
}

std::vector<message> settings_of(const render_order& order, const tesk::class_info& of_class) {
    std::vector<message> settings;
    if (!order.preset.empty()) settings = read_preset(of_class, order.preset);
    for (const std::string& setting : order.settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw usage_error("--set " + setting + ": expected NAME=VALUE");
        try {
            add_setting(settings, read_setting(of_class, trimmed(setting.substr(0, equals)),
                                               setting.substr(equals + 1)));
        } catch (const bad_text& wrong) {
            throw usage_error("--set " + setting + ": " + wrong.what());
        }
    }
    return settings;
}

score score_of(const render_order& order, const tesk::class_info& of_class) {
    score events(of_class);
    if (!order.score.empty()) events.add_file(order.score);
    for (const std::string& line : order.events) try {
            events.add(line);
        } catch (const bad_text& wrong) {
            throw usage_error("--at \"" + line + "\": " + wrong.what());
        }
    return events;
}

// Reads, plays and writes blocks of vectors to the end of the tail.
void play_all(const render_order& order, input_file& input, output_file& output, player& plays,
              picture* drawn) {
    constexpr int usual_block = 4096;  // frames; fewer cost more calls into the files
    const auto vector = static_cast<std::int64_t>(order.vector_size);
    const std::int64_t block = vector * std::max(1, usual_block / order.vector_size);
    const int channels = input.channels();
    std::vector<float> in(static_cast<std::size_t>(block * channels));
    std::vector<float> out(static_cast<std::size_t>(block * 2));
    tail ending(order.tail, input.rate());
    std::optional<std::int64_t> expected = input.promised();
    if (expected) {
        if (order.tail) *expected += std::llround(*order.tail * input.rate());
        output.expect(*expected);
    }
    progress bar(expected, input.rate(), order.quiet);
    for (bool input_plays = true; plays.position() < ending.end();) {
        const std::int64_t begin = plays.position();
        const std::int64_t got = input_plays ? input.read(in.data(), block) : 0;
        std::fill(in.begin() + got * channels, in.end(), 0.0f);
        if (input_plays && got < block) {
            ending.input_ends(begin + got);
            input_plays = false;
        }
        for (std::int64_t at = 0; at < block && begin + at < ending.end(); at += vector) {
            plays.play(&in[static_cast<std::size_t>(at * channels)], channels,
                       &out[static_cast<std::size_t>(at * 2)]);
            ending.hear(&out[static_cast<std::size_t>(at * 2)], vector);
        }
        const std::int64_t played = std::min(plays.position(), ending.end()) - begin;
        output.write(out.data(), played);
        if (drawn != nullptr) drawn->add(in.data(), channels, got, out.data(), played);
        bar.show(plays.position());
    }
}

void warn_of(const input_file& input, const output_file& output, const score& events, int rate) {
    const std::string& in = input.shown_name();
    if (input.cut_short())
        warn(in + ": ends at frame " + std::to_string(input.frames_read()) +
             ", its header promises more; played what is there");
    if (input.not_finite() > 0)
        warn(in + ": " + counted(input.not_finite(), "sample is", "samples are") +
             " not finite, taken as 0");
    if (const std::size_t late = events.events().size() - events.done(); late > 0)
        warn(counted(static_cast<std::int64_t>(late), "event", "events") + " behind the end at " +
             fixed_text(static_cast<double>(output.frames()) / rate, 3) +
             " s did not act, the first at " + number_text(events.events()[events.done()].seconds) +
             " s; a longer --tail reaches it");
    if (output.clipped() > 0)
        warn(counted(output.clipped(), "sample", "samples") +
             " beyond full scale cut to it; --subtype float keeps them");
    if (const std::string posted = take_posted_errors(); !posted.empty()) warn(posted);
}

}  // namespace

void render(const render_order& order) {
    check_place(order.output, order);
    std::optional<picture> drawn;
    if (!order.picture.empty()) {
        drawn.emplace(order.picture);
        check_place(order.picture, order);
    }
    const output_format format = output_format_of(order.output, order.subtype);
    remove_unfinished_on_signals();
    input_file input(order.input);
    const int rate = input.rate();
    if (order.seed) seed_random_device(*order.seed);

    const tesk::class_info& of_class =
        load_object(order.object.empty() ? usual_object() : fs::path(order.object));
    const std::vector<message> settings = settings_of(order, of_class);
    score events = score_of(order, of_class);
    events.schedule(rate);

    tesk::host::the().set_defaults(rate, order.vector_size);
    const std::unique_ptr<tesk::instance> effect = make_effect(of_class.name, settings);
    if (!effect->prepare(rate, order.vector_size))
        throw failure(of_class.name + ": gives no signal routine at " + std::to_string(rate) +
                      " Hz");
    if (order.seed && seeded_draws() == 0)
        warn("--seed " + std::to_string(*order.seed) + ": " + of_class.name +
             " draws no random word from the program, so the seed changes nothing");

    const auto began = std::chrono::steady_clock::now();
    output_file output(order.output, format, rate, order.force);
    player plays(*effect, events, order.vector_size);
    play_all(order, input, output, plays, drawn ? &*drawn : nullptr);
    output.finish();
    const double passed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    if (drawn) drawn->write(rate, output.frames(), events);
    warn_of(input, output, events, rate);
    if (order.quiet) return;
    const double length = static_cast<double>(output.frames()) / rate;
    std::cout << one_line(order.output + ": " + fixed_text(length, 3) + " s, " +
                          std::to_string(rate) + " Hz, peak " + dbfs_text(output.peak()) +
                          " dBFS, " + fixed_text(length / passed, 1) + " times real time")
              << std::endl;
}

}  // namespace program
