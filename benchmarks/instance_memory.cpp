// What an instance of the object holds, at three rates: by the system's count, the memory that is
// resident while sixteen of them are ready to play, less that before the first one.
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "host/host.h"

namespace {

double resident() {  // MiB
    long size = 0;
    long pages = 0;
    std::ifstream("/proc/self/statm") >> size >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) /
           (1024.0 * 1024.0);
}

}  // namespace

int main() {
    constexpr int count = 16;
    tesk::host& host = tesk::host::the();
    const std::string name = host.load(VESK_OBJECT_FILE);
    const double before = resident();
    for (const double rate : {44100.0, 96000.0, 192000.0}) {
        host.set_defaults(rate, 64);
        std::vector<decltype(host.make(name))> instances;
        for (int i = 0; i < count; ++i) {
            instances.push_back(host.make(name));
            instances.back()->prepare(rate, 64);
        }
        std::printf("%6.0f Hz  %7.2f MiB\n", rate, (resident() - before) / count);
    }
}
