// The object's thirty attributes as plain data: what registration, help texts, documentation and
// every driver read, and nothing repeats.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

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

struct attribute_row {
    attribute_info info;
    attribute_kind kind;
    double default_value;  // of a list: of each element
    double low = 0.0;      // range, of a list for each element; none for a toggle
    double high = 0.0;
    const char* unit = "";  // "dB", "s", "Hz", "degrees"; none for a plain factor or position
    std::span<const char* const> value_names = {};  // of a choice
};

constexpr std::size_t attribute_count = 30;
constexpr std::size_t list_length = 2;  // elements of a list that count: left, right

// In the order of registration.
extern const std::array<attribute_row, attribute_count> attribute_table;

// The index of an attribute, attribute_count when there is none of the name.
std::size_t attribute_index(std::string_view name) noexcept;

// What the reference page says of the class.
namespace class_metadata {
constexpr const char* description = "A modulation delay effect";
constexpr const char* author = "Velmarine";
constexpr const char* tags = "effect";
}  // namespace class_metadata

}  // namespace kv7::orv
