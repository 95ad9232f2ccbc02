// A typed attribute: its value lives here, and every reading and writing of it, from any thread,
// passes through one object.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "framework/attribute_base.h"
#include "framework/symbol_table.h"

namespace kv7::ply {

enum class limit : std::int32_t { none = 0 };  // a value outside its range is stored unchanged

// A device that has an attribute of an enumeration tells here how many values that has:
//     template <> struct enum_count<channel_mode> { static constexpr int value = 3; };
template <class T>
struct enum_count;

// Threadsafety 2: written on the calling thread. 0: writes from other threads wait for the main
// one, and may come from one such thread at a time.
template <class T, int Threadsafety, limit Limit, int N>
class attribute final : public attribute_base {
    static_assert(Threadsafety == 0 || Threadsafety == 2);
    static_assert(Threadsafety == 0 || std::is_trivially_copyable_v<T>, "is kept in an atomic");
    static constexpr bool is_number = std::is_same_v<T, double>;
    static constexpr bool is_list = std::is_same_v<T, std::vector<double>>;
    static constexpr bool is_bool = std::is_same_v<T, bool>;
    static constexpr bool is_enum = std::is_enum_v<T>;
    static_assert(is_number || is_list || is_bool || is_enum);

public:
    // A number: the range goes to the host and nowhere else.
    attribute(object_base* owner_, const std::string& name_, double default_, const atoms& range_,
              const std::string& title_ = {}, const std::string& description_ = {},
              attribute_setter setter_ = {}, symbol category_ = {},
              attribute_getter getter_ = {}) requires(is_number)
        : attribute(unfinished{}, owner_, name_, default_) {
        range_args = range_;
        for (const atom& bound : range_args) range.push_back(bound.as_float());
        finish(title_, description_, category_, std::move(setter_), std::move(getter_));
    }
    // A bool or a list.
    attribute(object_base* owner_, const std::string& name_, T default_,
              const std::string& title_ = {}, const std::string& description_ = {},
              symbol category_ = {}, attribute_setter setter_ = {},
              attribute_getter getter_ = {}) requires(is_bool || is_list)
        : attribute(unfinished{}, owner_, name_, std::move(default_)) {
        finish(title_, description_, category_, std::move(setter_), std::move(getter_));
    }
    // One of the named values of an enumeration.
    attribute(object_base* owner_, const std::string& name_, T default_,
              std::vector<std::string> enum_names, const std::string& title_ = {},
              const std::string& description_ = {}, symbol category_ = {},
              attribute_setter setter_ = {}, attribute_getter getter_ = {}) requires(is_enum)
        : attribute(unfinished{}, owner_, name_, default_) {
        enum_map = std::move(enum_names);
        for (int i = 0; i < enum_count<T>::value; ++i) range.push_back(static_cast<T>(i));
        finish(title_, description_, category_, std::move(setter_), std::move(getter_));
    }

    attribute& operator=(const atoms& values) {
        assign(values);
        return *this;
    }
    T stored() const { return value_; }

    void set(const atoms& values, bool notify, bool override_readonly) override;
    atoms get() const override { return getter ? getter() : to_atoms(value_); }
    std::string range_string() const override;
    void create(tesk_class* of_class, tesk_getter host_getter, tesk_setter host_setter,
                bool is_matrix) override {
        create_at_host(of_class, host_getter, host_setter, is_matrix, is_list);
    }
    std::string default_string() const override { return to_text(to_atoms(default_value)); }

private:
    std::conditional_t<Threadsafety == 2, std::atomic<T>, T> value_{};

public:
    T default_value{};
    atoms range_args;                   // as given
    std::vector<T> range;               // the same, typed
    std::vector<std::string> enum_map;  // names of an enumeration, by index

private:
    deferred_attribute_set deferred_;

    struct unfinished {};
    attribute(unfinished, object_base* owner_, const std::string& name_, T default_)
        : attribute_base(owner_, name_),
          value_(default_),
          default_value(std::move(default_)),
          deferred_(this, [](attribute_base& self, const atoms& values) {
              static_cast<attribute&>(self).apply_value(values);
          }) {}

    static atoms to_atoms(const T& value);
    void finish(const std::string& title, const std::string& description, symbol category,
                attribute_setter setter, attribute_getter getter);
    void write(const atoms& values);
    void apply_value(const atoms& values);  // an empty list changes nothing
    T converted(const atoms& values) const;
};

template <class T, int Threadsafety, limit Limit, int N>
void attribute<T, Threadsafety, Limit, N>::finish(const std::string& title_,
                                                  const std::string& description_, symbol category_,
                                                  attribute_setter setter_,
                                                  attribute_getter getter_) {
    owner.attributes.enter(name.text(), this);
    if constexpr (is_number || is_list) {
        datatype = symbols::float64;
        if (name == symbol("fontname")) style = style_font;
    } else {
        datatype = symbols::long_integer;
        style = is_bool ? style_onoff : style_enumindex;
    }
    title = title_;
    description = description_;
    category = category_;
    setter = std::move(setter_);
    getter = std::move(getter_);
    write(to_atoms(default_value));
    notify_if_value();
}

template <class T, int Threadsafety, limit Limit, int N>
void attribute<T, Threadsafety, Limit, N>::set(const atoms& values, bool notify,
                                               bool override_readonly) {
    if (readonly && !override_readonly) return;
    if (!sent_to_host(values, notify)) write(values);
    notify_if_value();
}

template <class T, int Threadsafety, limit Limit, int N>
void attribute<T, Threadsafety, Limit, N>::write(const atoms& values) {
    if (Threadsafety == 2 || may_apply_here())
        apply_value(values);
    else
        deferred_.post(values);
}

template <class T, int Threadsafety, limit Limit, int N>
void attribute<T, Threadsafety, Limit, N>::apply_value(const atoms& values) {
    if (values.empty()) return;
    const atoms taken = setter ? setter(values, -1) : values;
    if (!taken.empty()) value_ = converted(taken);
}

template <class T, int Threadsafety, limit Limit, int N>
T attribute<T, Threadsafety, Limit, N>::converted(const atoms& values) const {
    const atom& first = values.front();
    if constexpr (is_number) {
        return first.as_float();
    } else if constexpr (is_bool) {
        return first.as_bool();
    } else if constexpr (is_list) {
        T list;
        for (const atom& item : values) list.push_back(item.as_float());
        return list;
    } else {
        if (!setter && first.is_symbol()) {
            const auto place =
                std::find(enum_map.begin(), enum_map.end(), first.as_symbol().text());
            return place == enum_map.end() ? T{value_} : static_cast<T>(place - enum_map.begin());
        }
        const auto index = static_cast<std::int32_t>(first.as_long());
        return static_cast<T>(std::clamp(index, 0, enum_count<T>::value - 1));
    }
}

template <class T, int Threadsafety, limit Limit, int N>
atoms attribute<T, Threadsafety, Limit, N>::to_atoms(const T& value) {
    if constexpr (is_list)
        return atoms(value.begin(), value.end());
    else if constexpr (is_enum)
        return {atom(static_cast<std::int32_t>(value))};
    else
        return {atom(value)};
}

template <class T, int Threadsafety, limit Limit, int N>
std::string attribute<T, Threadsafety, Limit, N>::range_string() const {
    std::ostringstream text;
    if constexpr (!is_list) {
        for (const T item : range) {
            text << '"';
            if constexpr (!is_enum)
                text << item;
            else if (const auto index = static_cast<std::size_t>(item); index < enum_map.size())
                text << enum_map[index];
            else
                text << index;
            text << "\" ";
        }
    }
    return text.str();
}

}  // namespace kv7::ply
