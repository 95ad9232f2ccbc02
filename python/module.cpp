// The effect for Python: vesk._vesk.Vesk, made from the attribute table.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/failure.h"
#include "tools/preset_text.h"
#include "tools/seed.h"
#include "tools/table_attributes.h"
#include "tools/text.h"
#include "vesk_driver.h"

namespace py = pybind11;

namespace {

using kv7::orv::attribute_count;
using kv7::orv::attribute_kind;
using kv7::orv::attribute_table;

const std::vector<program::value_attribute>& known() {
    static const std::vector<program::value_attribute> attributes = program::attributes_of_table();
    return attributes;
}

std::size_t index_of(const std::string& name) {
    const std::size_t index = kv7::orv::attribute_index(name);
    if (index < attribute_count) return index;
    std::vector<std::string> names;
    for (const program::value_attribute& attribute : known()) names.push_back(attribute.name);
    throw py::value_error(program::unknown_name("attribute", name, names, "Vesk.attributes()"));
}

// As one would type it: texts with units and names of choices are understood, too.
std::string text_of(const py::handle& value) {
    if (py::isinstance<py::str>(value)) return value.cast<std::string>();
    if (py::isinstance<py::bool_>(value)) return value.cast<bool>() ? "on" : "off";
    if (py::isinstance<py::sequence>(value)) {
        std::string words;
        for (const py::handle element : value.cast<py::sequence>())
            words += (words.empty() ? "" : " ") + text_of(element);
        return words;
    }
    return program::number_text(py::float_(value.cast<double>()).cast<double>());
}

class effect {
public:
    effect(double rate, const std::optional<std::string>& preset_file,
           std::optional<std::uint64_t> seed, const py::dict& attributes)
        : rate_(rate), seed_(seed), driver_(seeded(rate, seed)) {
        driver_.prepare(rate);
        for (std::size_t i = 0; i < attribute_count; ++i)
            values_[i].assign(attribute_table[i].kind == attribute_kind::list ? 2 : 1,
                              attribute_table[i].default_value);
        if (preset_file)
            for (const auto& [attribute, values] :
                 program::read_preset_text(*preset_file, known()).settings)
                keep(attribute, values);
        for (const auto& [name, value] : attributes) set(index_of(name.cast<std::string>()), value);
    }

    void set(std::size_t attribute, const py::handle& value) {
        const program::value_attribute& row = known()[attribute];
        try {
            keep(attribute, program::read_values(row, text_of(value), {}));
        } catch (const program::bad_text& wrong) {
            throw py::value_error(row.name + ": " + wrong.what());
        }
    }

    py::object get(std::size_t attribute) const {
        const std::vector<double>& values = values_[attribute];
        switch (attribute_table[attribute].kind) {
            case attribute_kind::toggle:
                return py::bool_(values[0] != 0.0);
            case attribute_kind::choice:
                return py::str(
                    attribute_table[attribute].value_names[static_cast<std::size_t>(values[0])]);
            case attribute_kind::list:
                return py::make_tuple(values[0], values[1]);
            case attribute_kind::continuous:
                break;
        }
        return py::float_(values[0]);
    }

    py::array process(const py::array& sound) {
        const bool single = sound.dtype().is(py::dtype::of<float>());
        if (!single && !sound.dtype().is(py::dtype::of<double>()))
            throw py::value_error("expected float32 or float64, not " +
                                  py::str(sound.dtype()).cast<std::string>());
        const bool mono = sound.ndim() == 1;
        if (!mono && (sound.ndim() != 2 || sound.shape(0) != 2))
            throw py::value_error("expected an array of shape (n,) or (2, n)");
        const py::ssize_t frames = sound.shape(mono ? 0 : 1);
        const py::array_t<double, py::array::c_style | py::array::forcecast> in(sound);
        py::array_t<double> out({py::ssize_t{2}, frames});
        const double* const from = in.data();
        double* const channels[2] = {out.mutable_data(), out.mutable_data() + frames};
        for (py::ssize_t i = 0; i < (mono ? frames : 2 * frames); ++i)
            if (!std::isfinite(from[i]))
                throw py::value_error("sample " +
                                      std::to_string(i % std::max<py::ssize_t>(frames, 1)) +
                                      " is not finite");
        for (std::size_t c = 0; c < 2; ++c)
            std::copy_n(from + (mono ? 0 : static_cast<py::ssize_t>(c) * frames), frames,
                        channels[c]);
        {
            const py::gil_scoped_release released;
            play(channels, frames);
        }
        if (single) return out.attr("astype")("float32").cast<py::array>();
        return out;
    }

    void clear() { driver_.core.request_clear(); }
    void reset() { driver_.core.request_reset(); }
    double rate() const { return rate_; }

    py::tuple state() const {
        py::dict attributes;
        for (std::size_t i = 0; i < attribute_count; ++i)
            attributes[attribute_table[i].info.name] = get(i);
        return py::make_tuple(rate_, seed_, attributes);
    }

private:
    static double seeded(double rate, std::optional<std::uint64_t> seed) {
        program::seed_random_device(seed);
        return rate;
    }

    // Reaches the driver before the next frame.
    void keep(std::size_t attribute, const std::vector<double>& values) {
        std::vector<double>& kept = values_[attribute];
        for (std::size_t i = 0; i < kept.size(); ++i)
            kept[i] = values[std::min(i, values.size() - 1)];
        changed_[attribute] = true;
    }

    void play(double* const* channels, py::ssize_t frames) {
        constexpr py::ssize_t most = 1 << 20;
        for (std::size_t i = 0; i < attribute_count; ++i) {
            if (!changed_[i]) continue;
            started_ ? driver_.set(i, values_[i]) : driver_.jump_to(i, values_[i]);
            changed_[i] = false;
        }
        if (!started_) driver_.start();
        started_ = true;
        for (py::ssize_t done = 0; done < frames; done += most) {
            double* const part[2] = {channels[0] + done, channels[1] + done};
            const kv7::orv::signal_bundle bundle{
                part, 2, static_cast<std::int32_t>(std::min(most, frames - done))};
            driver_.core.perform(bundle, bundle);
        }
    }

    double rate_;
    std::optional<std::uint64_t> seed_;
    kv7::orv::vesk_driver driver_;
    std::array<std::vector<double>, attribute_count> values_;
    std::array<bool, attribute_count> changed_{};
    bool started_ = false;
};

std::string range_of(std::size_t attribute) {
    const kv7::orv::attribute_row& row = attribute_table[attribute];
    if (row.kind == attribute_kind::toggle) return "on or off";
    if (row.kind == attribute_kind::choice) {
        std::string names;
        for (const char* name : row.value_names)
            names += (names.empty() ? "" : ", ") + std::string(name);
        return "one of " + names;
    }
    const std::string unit = *row.unit != '\0' ? std::string(" ") + row.unit : "";
    return program::number_text(row.low) + " to " + program::number_text(row.high) + unit +
           (row.kind == attribute_kind::list ? "; one value, or left and right" : "");
}

}  // namespace

PYBIND11_MODULE(_vesk, m) {
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const program::usage_error& wrong) {
            PyErr_SetString(PyExc_ValueError, wrong.what());
        } catch (const program::failure& failed) {
            PyErr_SetString(PyExc_OSError, failed.what());
        }
    });
    py::class_<effect> vesk(m, "Vesk",
                            "The delay. Attributes are properties and keyword arguments; numbers, "
                            "texts with units as \"375ms\", and names of choices are taken.");
    vesk.def(py::init([](double rate, const std::optional<std::string>& preset,
                         std::optional<std::uint64_t> seed, const py::kwargs& attributes) {
                 return std::make_unique<effect>(rate, preset, seed, attributes);
             }),
             py::arg("rate"), py::arg("preset") = py::none(), py::arg("seed") = py::none(),
             "rate: Hz. preset: a preset file. seed: makes what is random the same every time. "
             "Raises ValueError.");
    vesk.def("process", &effect::process, py::arg("sound"),
             "Plays the next frames and goes on from there at the next call. sound: float32 or "
             "float64, shape (2, n), or (n,) for both sides; any n. Returns shape (2, n) of the "
             "same type. The effect computes in 32 bits. Other threads run meanwhile.");
    vesk.def("clear", &effect::clear, "Silences the delay lines and the reverb.");
    vesk.def("reset", &effect::reset, "Back to the initial state; attributes stay.");
    vesk.def_property_readonly("rate", &effect::rate, "Hz.");
    vesk.def_static(
        "attributes",
        [] {
            std::vector<std::string> names;
            for (const kv7::orv::attribute_row& row : attribute_table)
                names.emplace_back(row.info.name);
            return names;
        },
        "The names of all attributes.");
    for (std::size_t i = 0; i < attribute_count; ++i)
        vesk.def_property(
            attribute_table[i].info.name, [i](const effect& e) { return e.get(i); },
            [i](effect& e, const py::object& value) { e.set(i, value); },
            py::doc((std::string(attribute_table[i].info.description) + " " + range_of(i) + ".")
                        .c_str()));
    vesk.def(py::pickle([](const effect& e) { return e.state(); },
                        [](const py::tuple& state) {
                            return std::make_unique<effect>(
                                state[0].cast<double>(), std::nullopt,
                                state[1].cast<std::optional<std::uint64_t>>(),
                                state[2].cast<py::dict>());
                        }));
}
