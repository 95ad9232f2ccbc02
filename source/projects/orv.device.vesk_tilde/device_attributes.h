// The attributes of a device as its host knows them, joined with the roads their values take to the
// engine: a ramp for a number, the queue for all else.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "attribute_table.h"
#include "attribute_values.h"
#include "engine/modes.h"
#include "framework/attributes.h"
#include "parameter_queue.h"
#include "smooth_value.h"

namespace kv7::ply {

template <>
struct enum_count<orv::vesk::channel_mode> {
    static constexpr int value = 3;
};
template <>
struct enum_count<orv::vesk::waveform_mode> {
    static constexpr int value = 6;
};
template <>
struct enum_count<orv::vesk::location_mode> {
    static constexpr int value = 3;
};
template <>
struct enum_count<orv::vesk::dry_wet_mode> {
    static constexpr int value = 2;
};

}  // namespace kv7::ply

namespace kv7::orv {

using ply::limit;

// Owns whatever kind of attribute stands behind it.
class attribute_base {
public:
    attribute_base() = default;
    virtual ~attribute_base() = default;
    attribute_base(const attribute_base&) = delete;
    attribute_base& operator=(const attribute_base&) = delete;
};

template <int Threadsafety>
class smooth_attribute;

// A number that ramps; any thread may set it.
template <>
class smooth_attribute<0> final : public attribute_base {
public:
    smooth_attribute(ply::object_base* owner, const attribute_row& row,
                     std::function<void(double)> setter)
        : value(row.default_value, row.low, row.high, std::move(setter)),
          host_attribute_(
              owner, row.info.name, row.default_value, {ply::atom(row.low), ply::atom(row.high)},
              row.info.label, row.info.description,
              [this](const ply::atoms& values, int) {
                  value.set_value(values.front().as_float());
                  return values;
              },
              ply::symbol(row.info.category),
              [this] { return ply::atoms{ply::atom(value.user_value.load())}; }) {}

    smooth_value value;

private:
    ply::attribute<double, 2, limit::none, 2> host_attribute_;
};

// A toggle, choice or list. Its value changes on the main thread alone, whether or not the queue
// took the change, and is what the attribute reports.
template <class T, int Threadsafety, limit Limit>
class attribute;

template <class T>
class attribute<T, 0, limit::none> final : public attribute_base {
    static constexpr bool is_toggle = std::is_same_v<T, bool>;
    static constexpr bool is_list = std::is_same_v<T, std::vector<double>>;
    // What the setter takes.
    using argument =
        std::conditional_t<is_toggle, bool,
                           std::conditional_t<is_list, std::span<const double>, std::int32_t>>;

public:
    template <class Engine>
    attribute(ply::object_base* owner, const attribute_row& row,
              bound_setter<Engine, argument> setter, parameter_queue<Engine>& queue)
        : value_(standard(row)),
          host_attribute_(make_host_attribute(
              owner, row,
              [this, setter, &queue, &row](const ply::atoms& values, int) {
                  T taken = taken_from(values, row);
                  queue.post_change(setter, as_argument(taken));
                  value_ = std::move(taken);
                  return values;
              },
              [this] { return as_atoms(value_); })) {}

private:
    using host_attribute = ply::attribute<T, 0, limit::none, 2>;

    static T standard(const attribute_row& row) {
        if constexpr (is_toggle)
            return row.default_value != 0.0;
        else if constexpr (is_list)
            return T(list_length, row.default_value);
        else
            return static_cast<T>(static_cast<std::int32_t>(row.default_value));
    }

    static T taken_from(const ply::atoms& values, const attribute_row& row) {
        if constexpr (is_toggle) {
            return values.front().as_bool();
        } else if constexpr (is_list) {
            T list;
            for (const ply::atom& item : values)
                list.push_back(clamped_element(item.as_float(), row.low, row.high));
            return list;
        } else {
            // Not tested here: the engine's setter drops an index that there is not.
            return static_cast<T>(static_cast<std::int32_t>(values.front().as_long()));
        }
    }

    static argument as_argument(const T& value) {
        if constexpr (is_toggle || is_list)
            return value;
        else
            return static_cast<std::int32_t>(value);
    }

    static ply::atoms as_atoms(const T& value) {
        if constexpr (is_list)
            return {value.begin(), value.end()};
        else
            return {ply::atom(static_cast<std::int32_t>(value))};
    }

    template <class Setter, class Getter>
    static std::unique_ptr<host_attribute> make_host_attribute(ply::object_base* owner,
                                                               const attribute_row& row,
                                                               Setter setter, Getter getter) {
        const auto& [name, label, description, category] = row.info;
        const ply::symbol group(category);
        if constexpr (is_toggle || is_list)
            return std::make_unique<host_attribute>(owner, name, standard(row), label, description,
                                                    group, std::move(setter), std::move(getter));
        else
            return std::make_unique<host_attribute>(
                owner, name, standard(row),
                std::vector<std::string>(row.value_names.begin(), row.value_names.end()), label,
                description, group, std::move(setter), std::move(getter));
    }

    T value_;
    std::unique_ptr<host_attribute> host_attribute_;
};

}  // namespace kv7::orv
