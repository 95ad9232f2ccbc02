// One attribute as plain data: texts, kind, range, and the setter that its values reach. A row that
// lacks something does not compile.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>

#include "choice_names.h"
#include "engine/ramp.h"

namespace orvane::blocks::vesk {
struct Vesk;
}

namespace kv7::orv {

// What a person reads of an attribute.
struct attribute_info {
    const char* name;
    const char* label;
    const char* description;
    const char* category = "";  // none
};

enum class attribute_kind {
    continuous,  // a 64-bit float that ramps
    toggle,      // off or on
    choice,      // one of value_names, by index
    list         // a 64-bit float for each channel
};

// Writes a value to the members of the engine, between two samples. The type of the value decides
// the kind of the attribute.
template <class Value>
using setter_of = void (*)(orvane::blocks::vesk::Vesk&, Value);

// The setter of a continuous attribute. While the attribute ramps, the engine gets the values of a
// block as a ramp of the parameter. stages, where there is one, tells which stages of the engine
// are in use at a value: a block in which they would change is cut there.
struct ramped_setter {
    setter_of<double> set;
    orvane::blocks::vesk::Parameter parameter;
    int (*stages)(double v) = nullptr;
};

// The type of the values that a setter takes.
template <class Setter>
struct setter_value_of;
template <class Value>
struct setter_value_of<setter_of<Value>> {
    using type = Value;
};
template <>
struct setter_value_of<ramped_setter> {
    using type = double;
};
template <class Setter>
using setter_value = typename setter_value_of<Setter>::type;

using attribute_setter =
    std::variant<ramped_setter, setter_of<bool>, setter_of<vesk::channel_mode>,
                 setter_of<vesk::waveform_mode>, setter_of<vesk::location_mode>,
                 setter_of<vesk::dry_wet_mode>, setter_of<std::span<const double>>>;

struct attribute_row {
    attribute_info info;
    attribute_kind kind;
    attribute_setter setter;
    double default_value;  // of a list: of each element
    double low = 0.0;      // range, of a list for each element; none for a toggle
    double high = 0.0;
    const char* unit = "";  // "dB", "s", "Hz", "degrees"; none for a plain factor or position
    std::span<const char* const> value_names = {};  // of a choice
};

constexpr std::size_t list_length = 2;  // elements of a list that count: left, right

// Hands values to the row's setter: the first one, of a list all. A toggle's and a choice's are
// integers, their fraction is dropped. No values change nothing.
void apply_value(orvane::blocks::vesk::Vesk& engine, const attribute_row& row,
                 std::span<const double> values);

// The makers of rows. A fault in one is an error of the compiler that shows its text.
namespace rows {

void fault_in_row(const char* fault);  // not to be called when the program runs
consteval void check(bool holds, const char* fault) {
    if (!holds) fault_in_row(fault);
}
consteval void check_texts(const attribute_info& info) {
    for (const char* text : {info.name, info.label, info.description})
        check(text != nullptr && *text != '\0', "a row needs a name, a label and a description");
}
consteval void check_range(double standard, double low, double high) {
    check(low < high, "low is below high");
    check(low <= standard && standard <= high, "the default lies in the range");
}

consteval attribute_row continuous(const attribute_info& info, const ramped_setter& setter,
                                   double standard, double low, double high,
                                   const char* unit = "") {
    check_texts(info);
    check_range(standard, low, high);
    return {info, attribute_kind::continuous, setter, standard, low, high, unit};
}

consteval attribute_row toggle(const attribute_info& info, setter_of<bool> setter) {
    check_texts(info);
    return {info, attribute_kind::toggle, setter, 0.0};
}

template <class Mode>
consteval attribute_row choice(const attribute_info& info, setter_of<Mode> setter, Mode standard) {
    check_texts(info);
    constexpr auto& names = choice_names<Mode>::names;
    check_range(static_cast<double>(standard), 0.0, static_cast<double>(names.size() - 1));
    return {info,   attribute_kind::choice,
            setter, static_cast<double>(standard),
            0.0,    static_cast<double>(names.size() - 1),
            "",     names};
}

consteval attribute_row list(const attribute_info& info, setter_of<std::span<const double>> setter,
                             double standard, double low, double high, const char* unit) {
    check_texts(info);
    check_range(standard, low, high);
    return {info, attribute_kind::list, setter, standard, low, high, unit};
}

}  // namespace rows

}  // namespace kv7::orv
