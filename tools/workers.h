// Does numbered tasks in several processes, each of which takes the next one when it is free. The
// host and the seed of the random source exist once per process, hence no threads.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace program {

// work runs in the workers and returns one line of text. done gets it in the caller's process, in
// the order in which tasks end. A worker that crashes is replaced; its task ends with crashed.
struct worker_tasks {
    std::size_t count = 0;
    std::size_t workers = 1;
    std::function<std::string(std::size_t task)> work;
    std::function<void(std::size_t task, const std::string& line)> done;
    std::function<void(std::size_t task, const std::string& reason)> crashed;
};

// When this process is killed the workers are sent SIGTERM. Throws failure when no process can be
// made.
void run(const worker_tasks& tasks);

}  // namespace program
