// A typed attribute: its value lives here, and every reading and writing of it, from any thread,
// passes through one object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "framework/attribute_base.h"
#include "framework/attribute_value.h"
#include "framework/shared_value.h"
#include "framework/symbol_table.h"
#include "framework/text.h"

namespace kv7::ply {

enum class limit : std::int32_t { none = 0 };  // a value outside its range is stored unchanged

// Threadsafety 2: written on the calling thread. 0: writes from other threads are deferred to the
// main one, the latest of them wins. Read on any thread.
template <class T, int Threadsafety, limit Limit, int N>
class attribute final : public attribute_base {
    static_assert(Threadsafety == 0 || Threadsafety == 2);
    static_assert(Threadsafety == 0 || std::is_trivially_copyable_v<T>, "is kept in an atomic");
    using kind = attribute_value<T>;
    static constexpr bool is_number = std::is_same_v<T, double>;
    static constexpr bool is_enum = std::is_enum_v<T>;

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
              attribute_getter getter_ = {}) requires(!is_number && !is_enum)
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
    T stored() const { return value_.load(); }

    void set(const atoms& values, bool notify, bool override_readonly) override;
    atoms get() const override { return getter ? getter() : kind::to_atoms(stored()); }
    std::string range_string() const override;
    void create(tesk_class* of_class, tesk_getter host_getter, tesk_setter host_setter,
                bool is_matrix) override {
        create_at_host(of_class, host_getter, host_setter, is_matrix, kind::is_array);
    }
    std::string default_string() const override { return to_text(kind::to_atoms(default_value)); }

private:
    shared_value<T> value_;

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

    void finish(const std::string& title, const std::string& description, symbol category,
                attribute_setter setter, attribute_getter getter);
    void write(const atoms& values);
    void apply_value(const atoms& values);  // an empty list changes nothing
};

template <class T, int Threadsafety, limit Limit, int N>
void attribute<T, Threadsafety, Limit, N>::finish(const std::string& title_,
                                                  const std::string& description_, symbol category_,
                                                  attribute_setter setter_,
                                                  attribute_getter getter_) {
    owner.attributes.enter(name.text(), this);
    datatype = kind::datatype();
    style = kind::style;
    if (style == style_none && name == symbol("fontname")) style = style_font;
    title = title_;
    description = description_;
    category = category_;
    setter = std::move(setter_);
    getter = std::move(getter_);
    write(kind::to_atoms(default_value));
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
    if (taken.empty()) return;
    value_.store(kind::from_atoms(taken, stored(), enum_map, !setter));
    if constexpr (kind::is_array) size = static_cast<std::int64_t>(taken.size());
}

template <class T, int Threadsafety, limit Limit, int N>
std::string attribute<T, Threadsafety, Limit, N>::range_string() const {
    std::ostringstream text = classic_text();
    for (std::size_t i = 0; i < range.size(); ++i) {
        text << '"';
        kind::print(text, range[i], enum_map);
        text << "\" ";
    }
    return text.str();
}

}  // namespace kv7::ply
