// Where the bytes of a sound file go: a file, or the standard output.
#pragma once

#include <cstdint>
#include <string>

namespace program {

class byte_sink {
public:
    virtual ~byte_sink() = default;

    // The calls that audio libraries need of a file. After a short count error() has the reason.
    virtual std::int64_t write(const void* bytes, std::int64_t count) noexcept = 0;
    virtual std::int64_t read(void* bytes, std::int64_t count) noexcept = 0;
    virtual std::int64_t seek(std::int64_t offset, int whence) noexcept = 0;
    virtual std::int64_t size() noexcept = 0;

    virtual int error() const = 0;                        // errno of the first failure, or 0
    virtual std::string text_of(int error) const = 0;     // one line, of an errno
    virtual void finish_as(const std::string& path) = 0;  // throws failure
};

}  // namespace program
