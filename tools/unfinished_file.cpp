#include "tools/unfinished_file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "tools/failure.h"

namespace program {

namespace {

constexpr std::size_t max_path = 4096;  // characters
constexpr std::array ending_signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// The path of the one unfinished file, or empty. The signal handler reads it, so it changes only
// while the signals are blocked.
std::array<char, max_path> unfinished_path{};

struct blocked_signals {
    blocked_signals() {
        sigset_t blocked;
        sigemptyset(&blocked);
        for (const int signal : ending_signals) sigaddset(&blocked, signal);
        sigprocmask(SIG_BLOCK, &blocked, &before);
    }
    ~blocked_signals() { sigprocmask(SIG_SETMASK, &before, nullptr); }
    blocked_signals(const blocked_signals&) = delete;
    blocked_signals& operator=(const blocked_signals&) = delete;
    sigset_t before{};
};

// Ends at once instead of setting a flag: the program may be blocked reading a pipe.
void end_program(int signal) {
    if (unfinished_path[0] != '\0') unlink(unfinished_path.data());
    _exit(128 + signal);
}

// Where a symbolic link leads, so that the file there is replaced and not the link.
std::string linked_path(const std::string& path) {
    std::error_code failed;
    if (!std::filesystem::is_symlink(path, failed)) return path;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, failed);
    return failed ? path : target.string();
}

std::string temporary_path(const std::string& final_path) {
    const std::filesystem::path path(final_path);
    const std::string name = "." + path.filename().string() + ".part-" + std::to_string(getpid());
    return (path.parent_path() / name).string();
}

// Without replacing a file made there after the check of the command line. Returns an errno or 0.
int rename_without_replacing(const char* from, const char* to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // Where the file system has no such rename: a link doesn't replace a file either.
    if (link(from, to) != 0) return errno;
    unlink(from);
    return 0;
}

}  // namespace

unfinished_file::unfinished_file(std::string path, bool replace)
    : path_(replace ? linked_path(path) : std::move(path)), replace_(replace) {
    const std::string temporary = temporary_path(path_);
    if (temporary.size() >= max_path) fail(ENAMETOOLONG);
    const blocked_signals guard;
    file_ = open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file_ < 0) fail(errno);
    // A file that is replaced keeps its mode.
    struct stat before {};
    if (replace_ && stat(path_.c_str(), &before) == 0) fchmod(file_, before.st_mode & 07777);
    temporary.copy(unfinished_path.data(), temporary.size());
    unfinished_path[temporary.size()] = '\0';
}

unfinished_file::~unfinished_file() {
    if (file_ >= 0) close(file_);
    const blocked_signals guard;
    if (unfinished_path[0] != '\0') unlink(unfinished_path.data());
    unfinished_path[0] = '\0';
}

void unfinished_file::fail(int error) const {
    throw failure(text_of(error));
}

std::string unfinished_file::text_of(int error) const {
    return path_ + ": can't be written: " + std::strerror(error);
}

std::int64_t unfinished_file::write(const void* bytes, std::int64_t count) noexcept {
    std::int64_t done = 0;
    while (done < count) {
        const ssize_t n = ::write(file_, static_cast<const char*>(bytes) + done,
                                  static_cast<std::size_t>(count - done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && error_ == 0) error_ = errno;
        if (n <= 0) break;
        done += n;
    }
    return done;
}

std::int64_t unfinished_file::read(void* bytes, std::int64_t count) noexcept {
    return ::read(file_, bytes, static_cast<std::size_t>(count));
}

std::int64_t unfinished_file::seek(std::int64_t offset, int whence) noexcept {
    return lseek(file_, offset, whence);
}

std::int64_t unfinished_file::size() noexcept {
    struct stat about {};
    return fstat(file_, &about) == 0 ? about.st_size : -1;
}

void unfinished_file::finish() {
    finish_as(path_);
}

void unfinished_file::finish_as(const std::string& path) {
    path_ = replace_ ? linked_path(path) : path;
    if (error_ != 0) fail(error_);
    if (close(std::exchange(file_, -1)) != 0)
        fail(errno);  // where network file systems report a full disk
    const blocked_signals guard;
    int error = 0;
    if (!replace_)
        error = rename_without_replacing(unfinished_path.data(), path_.c_str());
    else if (std::rename(unfinished_path.data(), path_.c_str()) != 0)
        error = errno;
    if (error != 0) fail(error);
    unfinished_path[0] = '\0';
}

void remove_unfinished_on_signals() {
    struct sigaction action {};
    action.sa_handler = end_program;
    sigemptyset(&action.sa_mask);
    for (const int signal : ending_signals) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        // A signal that was ignored at the start, as by nohup, stays ignored.
        if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
    }
    signal(SIGXFSZ, SIG_IGN);
}

}  // namespace program
