// Small readings and writings of text that hold in every locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace program {

std::string_view trimmed(std::string_view text);  // of blanks, tabs and line ends

std::string_view without_quotes(std::string_view text);  // if it has them on both ends

// All of the text, or nothing. A number is finite: "inf" and "nan" are none.
std::optional<double> read_number(std::string_view text);
std::optional<std::int64_t> read_integer(std::string_view text);

std::string one_line(std::string text);              // control characters become ?
std::string number_text(double value);               // shortest that reads the same
std::string fixed_text(double value, int decimals);  // 12.500
std::string dbfs_text(double peak);                  // of a linear peak: -3.2, -inf
std::string counted(std::int64_t n, const char* one, const char* several);  // 1 event, 2 events

// The name with the fewest letters to change, add or drop; the first of several; "" of none.
std::string nearest_name(std::string_view wanted, const std::vector<std::string>& names);

}  // namespace program
