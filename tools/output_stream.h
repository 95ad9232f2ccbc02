// The standard output as a sink of sound: WAV with unknown lengths, or samples alone.
#pragma once

#include <cstdint>
#include <string>

#include "tools/byte_sink.h"

namespace program {

class output_stream : public byte_sink {
public:
    output_stream();  // throws usage_error when the standard output is a terminal

    // What precedes the samples of a WAV stream: bits 0 means 32-bit floats.
    void write_wav_header(int rate, int channels, int bits);

    std::int64_t write(const void* bytes, std::int64_t count) noexcept override;
    std::int64_t read(void*, std::int64_t) noexcept override { return 0; }
    std::int64_t seek(std::int64_t, int) noexcept override { return written_; }
    std::int64_t size() noexcept override { return written_; }
    int error() const override { return error_; }
    void finish_as(const std::string& path) override;
    std::string text_of(int error) const override;

private:
    std::int64_t written_ = 0;  // bytes of samples
    int error_ = 0;
};

}  // namespace program
