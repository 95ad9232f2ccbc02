#include "vesk_driver.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "attribute_values.h"
#include "engine/sample_banks.h"
#include "setters.h"

namespace kv7::orv {
namespace {

using orvane::blocks::vesk::SampleTableSet;
using orvane::blocks::vesk::Vesk;

template <class... Cases>
struct overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
overloaded(Cases...) -> overloaded<Cases...>;

// The elements that count, each held to the range.
short_list list_of(const attribute_row& row, std::span<const double> values) noexcept {
    std::array<double, list_length> held{};
    const std::size_t count = std::min(values.size(), held.size());
    for (std::size_t i = 0; i < count; ++i) held[i] = clamped_element(values[i], row.low, row.high);
    return short_list(std::span(held).first(count));
}

}  // namespace

vesk_driver::vesk_driver(double rate) : core(rate) {
    core.rebuild_tables = [](Vesk& engine, float at) {
        return std::make_shared<SampleTableSet>(engine, at);
    };
    core.set_values_again = [this] {
        for (attribute& a : attributes_) set_again(a);
    };
    for (std::size_t i = 0; i < attribute_count; ++i) attributes_.push_back(make_attribute(i));
}

// The default of a queued attribute goes the way of every later value, through the queue.
vesk_driver::attribute vesk_driver::make_attribute(std::size_t index) {
    const attribute_row& row = attribute_table[index];
    const double standard = row.default_value;
    attribute made = std::visit(
        overloaded{
            [&](continuous_setter setter) -> attribute {
                core.ramps.add(
                    smooth_values_.emplace_back(standard, row.low, row.high, core.bind(setter)));
                return &smooth_values_.back();
            },
            [&](toggle_setter setter) -> attribute {
                return toggle{core.bind(setter), standard != 0.0};
            },
            [&](choice_setter setter) -> attribute {
                return choice{core.bind(setter), static_cast<std::int32_t>(standard)};
            },
            [&](list_setter setter) -> attribute {
                return number_list{core.bind(setter), list_of(row, std::array{standard, standard})};
            }},
        attribute_setters[index]);
    if (row.kind != attribute_kind::continuous) set_again(made);
    return made;
}

void vesk_driver::set_again(attribute& a) {
    std::visit(
        overloaded{[](smooth_value* s) { s->set_value(s->user_value.load()); },
                   [&](number_list& l) { core.parameters.post_change(l.setter, l.value.values()); },
                   [&](auto& queued) { core.parameters.post_change(queued.setter, queued.value); }},
        a);
}

void vesk_driver::set(std::size_t index, std::span<const double> values) {
    if (values.empty()) return;
    attribute& a = attributes_[index];
    const attribute_row& row = attribute_table[index];
    std::visit(
        overloaded{[&](smooth_value* s) { s->set_value(values[0]); },
                   [&](toggle& t) { t.value = whole_number(values[0]) != 0; },
                   [&](choice& c) { c.value = static_cast<std::int32_t>(whole_number(values[0])); },
                   [&](number_list& l) { l.value = list_of(row, values); }},
        a);
    if (row.kind != attribute_kind::continuous) set_again(a);
}

void vesk_driver::land(std::size_t index, std::span<const double> values) {
    smooth_value* const* const number = std::get_if<smooth_value*>(&attributes_[index]);
    if (number == nullptr) return set(index, values);
    if (!values.empty()) (*number)->land(values[0]);
}

}  // namespace kv7::orv
