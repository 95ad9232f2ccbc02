#include "tools/workers.h"

#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <vector>

#include "tools/failure.h"

namespace program {

namespace {

// Shared by all processes: the next task that nobody has taken.
class task_counter {
public:
    task_counter()
        : next_(new (mmap(nullptr, sizeof *next_, PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<std::size_t>(0)) {}
    ~task_counter() { munmap(next_, sizeof *next_); }
    task_counter(const task_counter&) = delete;
    task_counter& operator=(const task_counter&) = delete;

    std::size_t take() { return next_->fetch_add(1); }
    std::size_t taken() const { return next_->load(); }

private:
    std::atomic<std::size_t>* next_;
};

void send_all(int pipe, const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t n = write(pipe, text.data() + sent, text.size() - sent);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) _exit(1);
        sent += static_cast<std::size_t>(n);
    }
}

// Sends `b TASK` before a task and `e LINE` after it.
[[noreturn]] void work_until_done(const worker_tasks& tasks, task_counter& counter, int pipe) {
    for (std::size_t task = 0; (task = counter.take()) < tasks.count;) {
        send_all(pipe, "b" + std::to_string(task) + "\n");
        send_all(pipe, "e" + tasks.work(task) + "\n");
    }
    _exit(0);
}

struct worker {
    pid_t process = 0;
    int pipe = -1;
    std::string unread{};
    bool busy = false;
    std::size_t task = 0;
};

worker start(const worker_tasks& tasks, task_counter& counter) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw failure(std::string("no pipe: ") + std::strerror(errno));
    std::cout.flush();
    const pid_t parent = getpid();
    const pid_t made = fork();
    if (made < 0) throw failure(std::string("no process for a worker: ") + std::strerror(errno));
    if (made == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) _exit(1);
        close(ends[0]);
        work_until_done(tasks, counter, ends[1]);
    }
    close(ends[1]);
    return {made, ends[0]};
}

void take_lines(worker& from, const worker_tasks& tasks) {
    for (std::size_t end = 0; (end = from.unread.find('\n')) != std::string::npos;) {
        const std::string line = from.unread.substr(0, end);
        from.unread.erase(0, end + 1);
        from.busy = line[0] == 'b';
        if (from.busy)
            from.task = std::stoull(line.substr(1));
        else
            tasks.done(from.task, line.substr(1));
    }
}

std::string reason_of(int status) {
    if (WIFSIGNALED(status))
        return "its worker was ended by signal " + std::to_string(WTERMSIG(status));
    return "its worker ended with exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

void run(const worker_tasks& tasks) {
    task_counter counter;
    std::vector<worker> workers;
    for (std::size_t i = 0; i < std::min(tasks.workers, tasks.count); ++i)
        workers.push_back(start(tasks, counter));
    while (!workers.empty()) {
        std::vector<pollfd> pipes;
        for (const worker& w : workers) pipes.push_back({w.pipe, POLLIN, 0});
        if (poll(pipes.data(), pipes.size(), -1) < 0) continue;
        for (std::size_t i = pipes.size(); i-- > 0;) {
            if (pipes[i].revents == 0) continue;
            std::array<char, 65536> bytes{};
            const ssize_t count = read(workers[i].pipe, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count > 0) {
                workers[i].unread.append(bytes.data(), static_cast<std::size_t>(count));
                take_lines(workers[i], tasks);
                continue;
            }
            int status = 0;
            waitpid(workers[i].process, &status, 0);
            close(workers[i].pipe);
            const worker ended = workers[i];
            workers.erase(workers.begin() + static_cast<std::ptrdiff_t>(i));
            if (ended.busy) tasks.crashed(ended.task, reason_of(status));
            if (status != 0 && counter.taken() < tasks.count)
                workers.push_back(start(tasks, counter));
        }
    }
}

}  // namespace program
