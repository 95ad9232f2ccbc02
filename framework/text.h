// Small operations on text, the same in every locale of the host.
#pragma once

#include <iosfwd>
#include <sstream>
#include <string>
#include <vector>

namespace kv7::ply {

std::string trimmed(const std::string& text);                    // without outer blanks
std::vector<std::string> split_list(const std::string& commas);  // each trimmed; "" gives none

// For texts made of numbers: a decimal point whatever locale the host has set.
std::ostringstream classic_text();

// Writes text and a line end. Where the host has made the stream throw, a failure of the stream
// hands the text to the host's error channel instead.
void print_line(std::ostream& stream, const std::string& text) noexcept;

}  // namespace kv7::ply
