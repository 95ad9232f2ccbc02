// A file that is written beside its place and put there when it is whole. Until then it is removed
// by the destructor and by the signals that end the program.
#pragma once

#include <cstdint>
#include <string>

namespace program {

class unfinished_file {
public:
    // Makes `.NAME.part-PID` in the folder of place; throws failure. replace: a file at place goes.
    unfinished_file(std::string place, bool replace);
    ~unfinished_file();
    unfinished_file(const unfinished_file&) = delete;
    unfinished_file& operator=(const unfinished_file&) = delete;

    // What audio libraries ask of a file. A short count leaves the reason in error().
    std::int64_t write(const void* bytes, std::int64_t count) noexcept;
    std::int64_t read(void* bytes, std::int64_t count) noexcept;
    std::int64_t seek(std::int64_t offset, int whence) noexcept;
    std::int64_t size() noexcept;

    int error() const { return error_; }  // errno of the first call that failed, or 0

    void finish();                            // puts it at its place; throws failure
    [[noreturn]] void fail(int error) const;  // with the text of an errno

private:
    std::string place_;
    bool replace_;
    int file_ = -1;
    int error_ = 0;
};

// From here on SIGINT, SIGTERM and SIGHUP remove the unfinished file and end the program with
// 128 and their number, whatever it waits for; a file too large is an error and no signal.
void remove_unfinished_on_signals();

}  // namespace program
