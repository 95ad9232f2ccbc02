// Reads and writes short texts, the same in every locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace program {

std::string_view trimmed(std::string_view text);  // without blanks and line ends around it

std::string in_quotes(std::string_view text);
std::string_view without_quotes(std::string_view text);  // when it has them at both ends

bool is_utf8(std::string_view text);

std::vector<std::string> separated(std::string_view text);  // words between blanks and commas

// The number that the whole text is, if it is one. "inf" and "nan" are none.
std::optional<double> read_number(std::string_view text);
std::optional<std::int64_t> read_integer(std::string_view text);

// For a terminal: control characters, and bytes that are not UTF-8, become ?
std::string one_line(std::string text);
std::string lower_case(std::string_view text);       // of the letters A to Z
std::string number_text(double value);               // shortest that reads as the same value
std::string fixed_text(double value, int decimals);  // 12.500
std::string dbfs_text(double peak);                  // of a linear peak: -3.2, -inf
std::string counted(std::int64_t n, const char* one, const char* several);  // 1 event, 2 events

// The name with the least edit distance, the first of several, in any case; "" when more than a
// third of its letters would change.
std::string near_name(std::string_view wanted, const std::vector<std::string>& names);

}  // namespace program
