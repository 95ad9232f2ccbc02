// What one instance of the object holds of the heap, at three rates: by the C library's own count,
// before it is made and once it is ready to play.
#include <malloc.h>

#include <cstdio>

#include "host/host.h"

namespace {

double held() {  // MiB
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd) / (1024.0 * 1024.0);
}

}  // namespace

int main() {
    tesk::host& host = tesk::host::the();
    const std::string name = host.load(VESK_OBJECT_FILE);
    { const auto first = host.make(name); }  // what is made once stays
    for (const double rate : {44100.0, 96000.0, 192000.0}) {
        host.set_defaults(rate, 64);
        const double before = held();
        const auto instance = host.make(name);
        instance->prepare(rate, 64);
        std::printf("%6.0f Hz  %7.2f MiB\n", rate, held() - before);
    }
}
