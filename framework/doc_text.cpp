#include "framework/doc_text.h"

#include <cstddef>

#include "framework/text.h"

namespace kv7::ply {

namespace {

constexpr std::size_t longest_digest = 256;  // characters

std::string marked_up(const std::string& token) {
    if (token.empty()) return token;
    if (token.front() == '@') return "<at>" + token.substr(1) + "</at>";
    if (token.front() == '#') return "<m>" + token.substr(1) + "</m>";
    if (token.size() >= 2 && token.front() == '[' && token.back() == ']')
        return "<o>" + token.substr(1, token.size() - 2) + "</o>";
    if (token == "&") return "&amp;";
    return token;
}

}  // namespace

std::string doc_format(const std::string& text) {
    std::string result;
    std::size_t begin = 0;
    for (std::size_t blank; (blank = text.find(' ', begin)) != std::string::npos; begin = blank + 1)
        result += marked_up(text.substr(begin, blank - begin)) + ' ';
    result += marked_up(text.substr(begin));
    return trimmed(result);
}

std::string digest_of(const std::string& formatted) {
    const std::string text = formatted.substr(0, longest_digest);
    std::size_t end = text.find(". ");
    if (end == std::string::npos) end = text.find('.');
    return text.substr(0, end);
}

}  // namespace kv7::ply
