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

// Levenshtein distance, computed row by row.
std::size_t edit_distance(std::string_view a, std::string_view b) {
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

std::string in_quotes(std::string_view text) {
    return "\"" + std::string(text) + "\"";
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

bool is_utf8(std::string_view text) {
    constexpr std::array<char32_t, 4> lowest{0, 0x80, 0x800, 0x10000};  // by continuation bytes
    while (!text.empty()) {
        const auto lead = static_cast<unsigned char>(text[0]);
        const std::size_t more = lead < 0x80   ? 0
                                 : lead < 0xC0 ? 4
                                 : lead < 0xE0 ? 1
                                 : lead < 0xF0 ? 2
                                 : lead < 0xF8 ? 3
                                               : 4;
        if (more == 4 || text.size() <= more) return false;
        char32_t code = more == 0 ? lead : lead & (0x3F >> more);
        for (const char c : text.substr(1, more)) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte >> 6 != 2) return false;
            code = code << 6 | (byte & 0x3F);
        }
        const bool surrogate = code >= 0xD800 && code < 0xE000;
        if (code < lowest[more] || code > 0x10FFFF || surrogate) return false;
        text.remove_prefix(more + 1);
    }
    return true;
}

std::vector<std::string> separated(std::string_view text) {
    constexpr std::string_view separators = " \t,";
    std::vector<std::string> words;
    for (std::size_t begin = 0;
         (begin = text.find_first_not_of(separators, begin)) != std::string_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        words.emplace_back(text.substr(begin, end - begin));
        begin = end;
    }
    return words;
}

std::string one_line(std::string text) {
    const bool readable = is_utf8(text);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        // U+0080 to U+009F are control characters, too.
        const bool two_byte_control =
            c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c < 0x20 || c == 0x7F || (c >= 0x80 && !readable)) text[i] = '?';
        if (readable && two_byte_control) text.replace(i, 2, "?");
    }
    return text;
}

std::string lower_case(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
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

std::string near_name(std::string_view wanted, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t min_distance = std::numeric_limits<std::size_t>::max();
    for (const std::string& name : names)
        if (const std::size_t distance = edit_distance(lower_case(wanted), lower_case(name));
            distance < min_distance && distance <= std::max<std::size_t>(name.size() / 3, 1)) {
            min_distance = distance;
            nearest = name;
        }
    return nearest;
}

}  // namespace program
