#include "tools/render_many.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/effect.h"
#include "tools/failure.h"
#include "tools/package.h"
#include "tools/render.h"
#include "tools/render_list.h"
#include "tools/rendering_json.h"
#include "tools/status_line.h"
#include "tools/text.h"
#include "tools/unfinished_file.h"
#include "tools/workers.h"

namespace program {

namespace {

namespace fs = std::filesystem;

render_options options_of(const list_entry& entry, const render_options& common) {
    render_options options = common;
    options.input = entry.input;
    options.output = entry.output;
    options.settings.insert(options.settings.end(), entry.settings.begin(), entry.settings.end());
    options.quiet = true;
    return options;
}

// In a worker: one file, as a line of JSON. Every file gets an instance of its own, 2 ms at most:
// `reset` would leave random states and running ramps as the last file left them.
std::string render_entry(const list_entry& entry, const render_options& common,
                         const tesk::class_info& of_class) {
    try {
        std::error_code failed;
        if (common.skip_existing && fs::exists(entry.output, failed))
            return json_of_skipped(entry.input, entry.output);
        const render_options options = options_of(entry, common);
        const fs::path folder = fs::path(entry.output).parent_path();
        if (!folder.empty() && !common.into.empty()) fs::create_directories(folder);
        check_paths(options);
        std::vector<std::string> warnings;
        rendering done = render_file(options, of_class, [&](const std::string& line) {
            warnings.push_back(one_line(line));
        });
        done.warnings = warnings;
        return json_of(entry.input, done);
    } catch (const std::exception& wrong) {
        take_posted_errors();
        return json_of_failed(entry.input, entry.output, one_line(wrong.what()));
    }
}

// What has been done so far, shown as it goes.
class tally {
public:
    tally(std::size_t count, const render_options& options)
        : count_(count), options_(options), line_(options.quiet) {}

    void add(const std::string& json) {
        const nlohmann::json done = nlohmann::json::parse(json);
        std::vector<std::string> texts;
        if (!done.at("ok")) {
            ++failed_;
            texts.push_back(done.at("error"));
        } else if (done.contains("skipped")) {
            ++skipped_;
        } else {
            ++rendered_;
            seconds_ += done.at("frames").get<double>() / done.at("rate").get<double>();
            if (done.contains("warnings")) texts = done.at("warnings");
        }
        if (options_.json || !texts.empty()) line_.clear();
        const std::string input = done.at("in");
        for (const std::string& text : texts)
            std::cerr << "render: " << (text.starts_with(input) ? "" : one_line(input) + ": ")
                      << text << '\n';
        if (options_.json) std::cout << json << std::endl;
        const std::size_t ended = rendered_ + skipped_ + failed_;
        line_.show(static_cast<double>(ended) / static_cast<double>(count_),
                   std::to_string(ended) + " of " + std::to_string(count_) +
                       (failed_ > 0 ? ", " + std::to_string(failed_) + " failed" : ""));
    }

    void summarise() {
        line_.clear();
        const double passed = std::chrono::duration<double>(clock::now() - began_).count();
        const std::string line =
            std::to_string(rendered_) + " rendered, " + std::to_string(skipped_) + " skipped, " +
            std::to_string(failed_) + " failed; " + fixed_text(seconds_, 1) + " s of sound in " +
            fixed_text(passed, 2) + " s, " + fixed_text(seconds_ / passed, 1) + " times real time";
        if (!options_.quiet) (options_.json ? std::cerr : std::cout) << line << std::endl;
        if (failed_ > 0)
            throw failure(counted(static_cast<std::int64_t>(failed_), "file", "files") + " of " +
                          std::to_string(count_) + " failed");
    }

private:
    using clock = std::chrono::steady_clock;
    std::size_t count_;
    const render_options& options_;
    status_line line_;
    clock::time_point began_ = clock::now();
    std::size_t rendered_ = 0;
    std::size_t skipped_ = 0;
    std::size_t failed_ = 0;
    double seconds_ = 0;  // of sound
};

std::vector<list_entry> entries_of(const render_options& options) {
    if (!options.picture.empty())
        throw usage_error("--picture " + options.picture + ": draws one rendering, not a list");
    std::vector<list_entry> entries =
        options.list.empty() ? list_folder(options.input, options.into) : read_list(options.list);
    if (entries.empty())
        throw failure((options.list.empty() ? options.input + ": has no sound file"
                                            : options.list + ": has no line") +
                      ", expected at least one");
    check_outputs(entries);
    return entries;
}

}  // namespace

void render_many(const render_options& options) {
    const std::vector<list_entry> entries = entries_of(options);
    tally so_far(entries.size(), options);
    const tesk::class_info* of_class = nullptr;  // in a worker, once it has loaded the object
    worker_tasks tasks;
    tasks.count = entries.size();
    tasks.workers = static_cast<std::size_t>(options.jobs);
    tasks.work = [&](std::size_t task) {
        if (of_class == nullptr) try {
                remove_unfinished_on_signals();
                of_class = &load_object(options.object.empty() ? default_object()
                                                               : fs::path(options.object));
            } catch (const std::exception& wrong) {
                return json_of_failed(entries[task].input, entries[task].output,
                                      one_line(wrong.what()));
            }
        return render_entry(entries[task], options, *of_class);
    };
    tasks.done = [&](std::size_t, const std::string& json) { so_far.add(json); };
    tasks.crashed = [&](std::size_t task, const std::string& reason) {
        so_far.add(json_of_failed(entries[task].input, entries[task].output,
                                  entries[task].input + ": " + reason));
    };
    run(tasks);
    so_far.summarise();
}

}  // namespace program
