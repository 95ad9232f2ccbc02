// Writes a file under a temporary name in the same folder and renames it when complete. Until then
// the destructor and the signals that end the program remove it.
#pragma once

#include <cstdint>
#include <string>

#include "tools/byte_sink.h"

namespace program {

class unfinished_file : public byte_sink {
public:
    // Makes `.NAME.part-PID` in the folder of path; throws failure. replace: finish replaces a file
    // of this path, or the one that a symbolic link there leads to, and keeps its mode.
    unfinished_file(std::string path, bool replace);
    ~unfinished_file() override;
    unfinished_file(const unfinished_file&) = delete;
    unfinished_file& operator=(const unfinished_file&) = delete;

    std::int64_t write(const void* bytes, std::int64_t count) noexcept override;
    std::int64_t read(void* bytes, std::int64_t count) noexcept override;
    std::int64_t seek(std::int64_t offset, int whence) noexcept override;
    std::int64_t size() noexcept override;
    int error() const override { return error_; }

    void finish();                                     // renames it to its path; throws failure
    void finish_as(const std::string& path) override;  // to another path in the same folder
    std::string text_of(int error) const override;

private:
    [[noreturn]] void fail(int error) const;  // throws failure

    std::string path_;
    bool replace_;
    int file_ = -1;
    int error_ = 0;
};

// After this call SIGINT, SIGTERM, SIGHUP and SIGQUIT remove the unfinished file and end the
// program with 128 plus their number, also while it is blocked in a read; a file above the size
// limit is an error of write instead of a signal.
void remove_unfinished_on_signals();

}  // namespace program
