#include "tools/output_stream.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/failure.h"

namespace program {

namespace {

void append(std::string& header, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) header += static_cast<char>(value >> 8 * i & 0xFF);
}

}  // namespace

output_stream::output_stream() {
    if (isatty(STDOUT_FILENO) == 1)
        throw usage_error("-: the standard output is a terminal, expected a pipe or a file");
}

void output_stream::write_wav_header(int rate, int channels, int bits) {
    constexpr std::uint32_t unknown_length = 0xFFFFFFFF;
    constexpr std::uint32_t integers = 1, floats = 3;  // sample types of a WAV file
    const auto bytes = static_cast<std::uint32_t>((bits > 0 ? bits : 32) / 8);
    const auto lanes = static_cast<std::uint32_t>(channels);
    const auto frames_per_second = static_cast<std::uint32_t>(rate);
    std::string header = "RIFF";
    append(header, unknown_length, 4);
    header += "WAVEfmt ";
    append(header, bits > 0 ? 16 : 18, 4);  // bytes of the chunk
    append(header, bits > 0 ? integers : floats, 2);
    append(header, lanes, 2);
    append(header, frames_per_second, 4);
    append(header, frames_per_second * lanes * bytes, 4);
    append(header, lanes * bytes, 2);
    append(header, 8 * bytes, 2);
    if (bits == 0) append(header, 0, 2);  // bytes of an extension, which floats must name
    header += "data";
    append(header, unknown_length, 4);
    write(header.data(), static_cast<std::int64_t>(header.size()));
    written_ = 0;
}

std::int64_t output_stream::write(const void* bytes, std::int64_t count) noexcept {
    std::int64_t done = 0;
    while (done < count) {
        const ssize_t n = ::write(STDOUT_FILENO, static_cast<const char*>(bytes) + done,
                                  static_cast<std::size_t>(count - done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && error_ == 0) error_ = errno;
        if (n <= 0) break;
        done += n;
    }
    written_ += done;
    return done;
}

void output_stream::finish_as(const std::string&) {
    if (error_ != 0) throw failure(text_of(error_));
}

std::string output_stream::text_of(int error) const {
    return std::string("standard output: can't be written: ") + std::strerror(error);
}

}  // namespace program
