// Reads the scenario language.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "attribute_table.h"
#include "scenario.h"

namespace scenario {
namespace {

using Words = std::vector<std::string>;

using wrong = std::runtime_error;

void need(const Words& words, std::size_t n) {
    if (words.size() < n)
        throw wrong("'" + words[0] + "' needs " + std::to_string(n - 1) + " words");
}

Event read_event(const Words& words) {
    need(words, 3);
    Event event;
    event.frame = number<std::uint64_t>(words[1]);
    if (words[2] == "clear") {
        event.kind = Event::Kind::clear;
    } else if (words[2] == "reset") {
        event.kind = Event::Kind::reset;
    } else if (words[2] == "rate") {
        need(words, 4);
        event.kind = Event::Kind::rate;
        event.values = {number<double>(words[3])};
    } else if (words[2] == "set") {
        need(words, 5);
        event.attribute = kv7::orv::attribute_index(words[3]);
        if (event.attribute == kv7::orv::attribute_count)
            throw wrong("no attribute '" + words[3] + "'");
        for (std::size_t i = 4; i < words.size(); ++i)
            event.values.push_back(number<double>(words[i]));
    } else {
        throw wrong("'" + words[2] + "' is neither set, clear, reset nor rate");
    }
    return event;
}

void read_line(const Words& words, Scenario& s) {
    need(words, 2);
    if (words[0] == "rate") {
        s.rate = number<double>(words[1]);
    } else if (words[0] == "frames") {
        s.frames = number<std::uint64_t>(words[1]);
    } else if (words[0] == "vector") {
        s.vector_size = number<std::uint64_t>(words[1]);
        if (s.vector_size == 0) throw wrong("a vector has at least one frame");
    } else if (words[0] == "input") {
        s.input = Words(words.begin() + 1, words.end());
    } else if (words[0] == "seed") {
        need(words, 3);
        s.seed = std::array{static_cast<std::uint32_t>(number<std::uint64_t>(words[1])),
                            static_cast<std::uint32_t>(number<std::uint64_t>(words[2]))};
    } else if (words[0] == "tables") {
        s.tables = s.folder + words[1];
    } else if (words[0] == "scenario") {
        need(words, 3);
        s.on_device = words[1] == "device";
        if (!s.on_device && words[1] != "engine") throw wrong("neither engine nor device");
        s.hash = number<std::uint64_t>(words[2], 16);
    } else if (words[0] == "at") {
        s.events.push_back(read_event(words));
    } else {
        throw wrong("unknown directive '" + words[0] + "'");
    }
}

}  // namespace

std::vector<Scenario> read_scenarios(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw wrong(path + ": cannot be read");
    return read_scenarios(file, path);
}

std::vector<Scenario> read_scenarios(std::istream& text, const std::string& path) {
    std::vector<Scenario> all(1);
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    all.back().folder = folder;
    const auto finish = [&] {
        Scenario& s = all.back();
        if (!(s.rate > 0.0))
            throw wrong(path + ":" + std::to_string(s.line) + ": no positive rate");
        std::ranges::stable_sort(s.events, {}, &Event::frame);
    };
    std::string line;
    int directives = 0;  // of the present scenario
    for (int n = 1; std::getline(text, line); ++n) {
        std::istringstream directive(line.substr(0, line.find('#')));
        const Words words{std::istream_iterator<std::string>(directive), {}};
        if (words.empty()) continue;
        if (words[0] == "scenario") {
            if (directives > 0) {
                finish();
                all.emplace_back().folder = folder;
            }
            all.back().line = n;
            directives = 0;
        }
        ++directives;
        try {
            read_line(words, all.back());
        } catch (const std::exception& e) {
            throw wrong(path + ":" + std::to_string(n) + ": " + e.what());
        }
    }
    finish();
    return all;
}

}  // namespace scenario
