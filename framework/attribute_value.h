// What differs between the types that an attribute's value may have: its type and style at the
// host, and how it becomes atoms and comes back from them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/attribute_base.h"
#include "framework/symbol_table.h"

namespace kv7::ply {

// The number of values of an enumeration, specialised by each device that has such an attribute:
//     template <> struct enum_count<channel_mode> { static constexpr int value = 3; };
template <class T>
struct enum_count;

// The members that every specialisation has:
//     datatype(), style, is_array   as the host knows the type
//     to_atoms(value)
//     from_atoms(values, old, names, by_name)   values: at least one; names of an enumeration;
//                                               by_name: a symbol is one of them
//     print(stream, item, names)    one item of the range
template <class T>
struct attribute_value;

template <>
struct attribute_value<double> {
    static const symbol& datatype() { return symbols::float64; }
    static constexpr std::int32_t style = style_none;
    static constexpr bool is_array = false;

    static atoms to_atoms(double value) { return {atom(value)}; }
    static double from_atoms(const atoms& values, double, const std::vector<std::string>&, bool) {
        return values.front().as_float();
    }
    static void print(std::ostream& to, double item, const std::vector<std::string>&) {
        to << item;
    }
};

template <>
struct attribute_value<bool> {
    static const symbol& datatype() { return symbols::long_integer; }
    static constexpr std::int32_t style = style_onoff;
    static constexpr bool is_array = false;

    static atoms to_atoms(bool value) { return {atom(value)}; }
    static bool from_atoms(const atoms& values, bool, const std::vector<std::string>&, bool) {
        return values.front().as_bool();
    }
    static void print(std::ostream& to, bool item, const std::vector<std::string>&) {
        to << (item ? 1 : 0);
    }
};

template <>
struct attribute_value<std::vector<double>> {
    using list = std::vector<double>;
    static const symbol& datatype() { return symbols::float64; }
    static constexpr std::int32_t style = style_none;
    static constexpr bool is_array = true;

    static atoms to_atoms(const list& value) { return atoms(value.begin(), value.end()); }
    static list from_atoms(const atoms& values, const list&, const std::vector<std::string>&,
                           bool) {
        list numbers;
        numbers.reserve(values.size());
        for (const atom& item : values) numbers.push_back(item.as_float());
        return numbers;
    }
    static void print(std::ostream&, const list&, const std::vector<std::string>&) {}  // no range
};

template <class T>
requires std::is_enum_v<T>
struct attribute_value<T> {
    static const symbol& datatype() { return symbols::long_integer; }
    static constexpr std::int32_t style = style_enumindex;
    static constexpr bool is_array = false;

    static atoms to_atoms(T value) { return {atom(static_cast<std::int32_t>(value))}; }
    // A name that there is not leaves the old value; a number is held to the bounds of the type.
    static T from_atoms(const atoms& values, T old, const std::vector<std::string>& names,
                        bool by_name) {
        const atom& first = values.front();
        if (by_name && first.is_symbol()) {
            const auto named = std::find(names.begin(), names.end(), first.as_symbol().text());
            return named == names.end() ? old : static_cast<T>(named - names.begin());
        }
        const auto index = static_cast<std::int32_t>(first.as_long());
        return static_cast<T>(std::clamp(index, 0, enum_count<T>::value - 1));
    }
    static void print(std::ostream& to, T item, const std::vector<std::string>& names) {
        const auto index = static_cast<std::size_t>(item);
        if (index < names.size())
            to << names[index];
        else
            to << index;
    }
};

}  // namespace kv7::ply
