// Turns a description into the reference page's text.
#pragma once

#include <string>

namespace kv7::ply {

// Marks up @attribute, #message and [object], and a lone ampersand; nothing else is escaped.
std::string doc_format(const std::string& text);

// The first sentence without its point; without a point the first 256 characters.
std::string digest_of(const std::string& formatted);

}  // namespace kv7::ply
