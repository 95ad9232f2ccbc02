#include "tools/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <system_error>

namespace program {

namespace {

template <class Number>
std::optional<Number> read_all(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stopped != end) return std::nullopt;
    return value;
}

// Levenshtein's distance, one row at a time.
std::size_t letters_apart(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::string_view without_quotes(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
        return text.substr(1, text.size() - 2);
    return text;
}

std::optional<double> read_number(std::string_view text) {
    const std::optional<double> value = read_all<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int64_t> read_integer(std::string_view text) {
    return read_all<std::int64_t>(text);
}

std::string one_line(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

std::string number_text(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string fixed_text(double value, int decimals) {
    std::array<char, 400> text{};  // the largest double has 309 digits
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value,
                                       std::chars_format::fixed, decimals)
                             .ptr};
}

std::string dbfs_text(double peak) {
    return peak > 0 ? fixed_text(20 * std::log10(peak), 1) : "-inf";
}

std::string counted(std::int64_t n, const char* one, const char* several) {
    return std::to_string(n) + " " + (n == 1 ? one : several);
}

std::string nearest_name(std::string_view wanted, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t fewest = std::numeric_limits<std::size_t>::max();
    for (const std::string& name : names)
        if (const std::size_t apart = letters_apart(wanted, name); apart < fewest) {
            fewest = apart;
            nearest = name;
        }
    return nearest;
}

}  // namespace program
