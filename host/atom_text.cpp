// Reads a list of atoms from a text, and writes one as a text that reads the same.
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "host/state.h"

namespace tesk {

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

[[noreturn]] void refuse(std::string_view what, std::size_t index) {
    throw std::invalid_argument(std::string(what) + " at character " + std::to_string(index + 1));
}

// A number when all of the word is one.
bool read_number(std::string_view word, std::size_t index, tesk_atom& value) {
    std::string_view digits = word;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') digits.remove_prefix(1);
    const std::size_t sign = digits.front() == '-' ? 1 : 0;
    if (sign == digits.size() ||
        (digits[sign] != '.' && (digits[sign] < '0' || digits[sign] > '9')))
        return false;  // "inf" and "nan" are names
    const char* const end = digits.data() + digits.size();
    std::int64_t integer = 0;
    if (const auto read = std::from_chars(digits.data(), end, integer); read.ptr == end) {
        if (read.ec == std::errc::result_out_of_range) refuse("number out of range", index);
        if (read.ec == std::errc{}) {
            value = atom_of(integer);
            return true;
        }
    }
    double number = 0;
    const auto read = std::from_chars(digits.data(), end, number);
    if (read.ptr != end || read.ec == std::errc::invalid_argument) return false;
    if (read.ec == std::errc::result_out_of_range) refuse("number out of range", index);
    value = atom_of(number);
    return true;
}

// Begins after the opening quote; leaves index after the closing one.
std::string read_quoted(const std::string& text, std::size_t& index) {
    const std::size_t opened = index - 1;
    std::string name;
    for (; index < text.size(); ++index) {
        if (text[index] == '"') {
            ++index;
            if (index < text.size() && !is_blank(text[index]))
                refuse("no blank after a closing quote", index);
            return name;
        }
        if (text[index] == '\\' && index + 1 < text.size()) ++index;
        if (text[index] == '\0') refuse("zero byte", index);
        name += text[index];
    }
    refuse("quote without an end", opened);
}

std::string quoted(std::string_view name) {
    std::string result = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + '"';
}

std::string text_of_name(const std::string& name) {
    if (name.empty() || name.find_first_of(" \t\n\r\"\\") != std::string::npos) return quoted(name);
    tesk_atom number{};
    try {
        return read_number(name, 0, number) ? quoted(name) : name;
    } catch (const std::invalid_argument&) {
        return quoted(name);  // too large for a number, and no name without quotes
    }
}

std::string text_of(const tesk_atom& value) {
    char digits[64];
    switch (value.type) {
        case 1: {
            const auto end = std::to_chars(digits, digits + sizeof digits, value.value.as_long);
            return {digits, end.ptr};
        }
        case 2: {
            const auto end = std::to_chars(digits, digits + sizeof digits, value.value.as_float);
            std::string text(digits, end.ptr);
            if (text.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
            return text;
        }
        case 3:
            return text_of_name(value.value.as_symbol->name);
        default:
            return "<object>";
    }
}

}  // namespace

atom_list atoms_of_text(const std::string& text) {
    atom_list values;
    std::size_t index = 0;
    while (true) {
        while (index < text.size() && is_blank(text[index])) ++index;
        if (index == text.size()) return values;
        if (text[index] == '"') {
            values.push_back(atom_of(read_quoted(text, ++index)));
            continue;
        }
        const std::size_t begin = index;
        for (; index < text.size() && !is_blank(text[index]); ++index) {
            if (text[index] == '"') refuse("quote inside a name", index);
            if (text[index] == '\0') refuse("zero byte", index);
        }
        const std::string word = text.substr(begin, index - begin);
        tesk_atom value{};
        values.push_back(read_number(word, begin, value) ? value : atom_of(word));
    }
}

std::string text_of_atoms(const atom_list& values) {
    std::string text;
    for (const tesk_atom& value : values) text += (text.empty() ? "" : " ") + text_of(value);
    return text;
}

double as_number(const std::string& text) {
    tesk_atom value{};
    try {
        if (!text.empty() && read_number(text, 0, value)) return atom_getfloat(&value);
    } catch (const std::invalid_argument&) {
    }
    return std::numeric_limits<double>::quiet_NaN();
}

std::vector<std::string> quoted_items(const std::string& text) {
    std::vector<std::string> items;
    std::size_t open = 0;
    while ((open = text.find('"', open)) != std::string::npos) {
        const std::size_t close = text.find('"', open + 1);
        if (close == std::string::npos) break;
        items.push_back(text.substr(open + 1, close - open - 1));
        open = close + 1;
    }
    return items;
}

}  // namespace tesk
