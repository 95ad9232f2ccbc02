// The attributes of a device as its host knows them. Each turns the host's atoms into numbers for
// the driver and reports its value back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "attribute_row.h"
#include "attribute_values.h"
#include "driver_core.h"
#include "framework/attributes.h"
#include "framework/shared_value.h"

namespace kv7::ply {

// The host learns an enumeration's bounds from its type.
template <class Mode>
requires requires {
    orv::choice_names<Mode>::names;
}
struct enum_count<Mode> {
    static constexpr int value = static_cast<int>(orv::choice_count<Mode>);
};

}  // namespace kv7::ply

namespace kv7::orv {

using ply::limit;

// Owns an attribute of any kind.
class attribute_base {
public:
    attribute_base() = default;
    virtual ~attribute_base() = default;
    attribute_base(const attribute_base&) = delete;
    attribute_base& operator=(const attribute_base&) = delete;

    // Sets its value once more, through the host, so that it reaches a new engine. Main thread.
    virtual void restore() = 0;
};

template <int Threadsafety>
class smooth_attribute;

// A number that ramps; any thread may set it.
template <>
class smooth_attribute<0> final : public attribute_base {
public:
    smooth_attribute(ply::object_base* owner, const attribute_row& row, smooth_value& ramp)
        : ramp_(ramp),
          host_attribute_(
              owner, row.info.name, row.default_value, {ply::atom(row.low), ply::atom(row.high)},
              row.info.label, row.info.description,
              [this](const ply::atoms& values, int) {
                  set(values.front().as_float());
                  return values;
              },
              ply::symbol(row.info.category),
              [this] { return ply::atoms{ply::atom(ramp_.user_value.load())}; }) {}

    void restore() override {
        const restoration here{this, ramp_.user_value.load()};
        const restoration* const outer = std::exchange(restored_here, &here);
        host_attribute_.set({ply::atom(here.value)}, true, false);
        restored_here = outer;
    }

private:
    struct restoration {
        const smooth_attribute* attribute;
        double value;
    };
    // The restoration that is under way on this thread, or null.
    inline static thread_local const restoration* restored_here = nullptr;

    void set(double x) {
        // A restored value that comes back from the host is no news: another thread may have set a
        // newer one since it was read, which must not be overwritten.
        const restoration* const echo = restored_here;
        if (echo != nullptr && echo->attribute == this && echo->value == x)
            ramp_.mark_pending();
        else
            ramp_.set_value(x);
    }

    smooth_value& ramp_;
    ply::attribute<double, 2, limit::none, 2> host_attribute_;
};

// How the value of a toggle, choice or list comes from atoms and reaches the driver as numbers.
template <class T>
struct device_value;

template <>
struct device_value<bool> {
    static bool standard(const attribute_row& row) { return row.default_value != 0.0; }
    static bool from_atoms(const ply::atoms& values, const attribute_row&) {
        return values.front().as_bool();
    }
    static std::vector<double> numbers(bool value) { return {value ? 1.0 : 0.0}; }
};

template <>
struct device_value<std::vector<double>> {
    using list = std::vector<double>;
    static list standard(const attribute_row& row) { return list(list_length, row.default_value); }
    static list from_atoms(const ply::atoms& values, const attribute_row& row) {
        list numbers;
        for (const ply::atom& item : values)
            numbers.push_back(clamped_element(item.as_float(), row.low, row.high));
        return numbers;
    }
    static const list& numbers(const list& value) { return value; }
};

template <class Mode>
requires std::is_enum_v<Mode>
struct device_value<Mode> {
    static Mode standard(const attribute_row& row) {
        return static_cast<Mode>(static_cast<std::int32_t>(row.default_value));
    }
    // Not tested here: the engine's setter drops a number that is no value.
    static Mode from_atoms(const ply::atoms& values, const attribute_row&) {
        return static_cast<Mode>(static_cast<std::int32_t>(values.front().as_long()));
    }
    static std::vector<double> numbers(Mode value) { return {static_cast<double>(value)}; }
};

// A toggle, choice or list. It is set on the main thread alone and reports what was set, whether or
// not the queue took it; any thread may read it.
template <class T, int Threadsafety, limit Limit>
class attribute;

template <class T>
class attribute<T, 0, limit::none> final : public attribute_base {
    using kind = device_value<T>;
    using host_attribute = ply::attribute<T, 0, limit::none, 2>;

public:
    template <class Engine>
    attribute(ply::object_base* owner, driver_core<Engine>& driver, const attribute_row& row,
              std::size_t index)
        : value_(kind::standard(row)),
          host_attribute_(make_host_attribute(
              owner, row,
              [this, &driver, &row, index](const ply::atoms& values, int) {
                  T taken = kind::from_atoms(values, row);
                  driver.set(index, kind::numbers(taken));
                  value_.store(std::move(taken));
                  return values;
              },
              [this] { return ply::attribute_value<T>::to_atoms(value_.load()); })) {}

    void restore() override { host_attribute_->set(host_attribute_->get(), true, false); }

private:
    template <class Setter, class Getter>
    static std::unique_ptr<host_attribute> make_host_attribute(ply::object_base* owner,
                                                               const attribute_row& row,
                                                               Setter setter, Getter getter) {
        const auto& [name, label, description, category] = row.info;
        const ply::symbol group(category);
        if constexpr (std::is_enum_v<T>)
            return std::make_unique<host_attribute>(
                owner, name, kind::standard(row),
                std::vector<std::string>(row.value_names.begin(), row.value_names.end()), label,
                description, group, std::move(setter), std::move(getter));
        else
            return std::make_unique<host_attribute>(owner, name, kind::standard(row), label,
                                                    description, group, std::move(setter),
                                                    std::move(getter));
    }

    ply::shared_value<T> value_;
    std::unique_ptr<host_attribute> host_attribute_;
};

}  // namespace kv7::orv
