#include "trapped.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sanitizer/allocator_interface.h>

#include <cmath>
namespace {

bool inside = false;
long calls = 0;

void count_call() {
    if (inside) ++calls;
}

[[maybe_unused]] const int hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { count_call(); },
    [](const volatile void* memory) {
        if (memory != nullptr) count_call();
    });

}  // namespace

#pragma GCC visibility push(default)
extern "C" void rt_enter() {
    inside = true;
}
extern "C" void rt_leave() {
    inside = false;
}
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto next =
        reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    count_call();
    return next(mutex);
}
#pragma GCC visibility pop

namespace fuzz {

void run(tesk::instance& instance, std::vector<double>& left, std::vector<double>& right,
         bool finite) {
    // Once: what the checks below would count is counted.
    static const bool shown = [] {
        pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
        rt_enter();
        void* volatile memory = std::malloc(1);
        std::free(memory);
        pthread_mutex_lock(&mutex);
        rt_leave();
        pthread_mutex_unlock(&mutex);
        return std::exchange(calls, 0) == 3;
    }();
    require(shown, "heap and locks are trapped");
    double* const channels[2] = {left.data(), right.data()};
    require(instance.run(channels, channels, static_cast<int>(left.size())),
            "every vector is played");
    require(calls == 0, "perform touches neither heap nor locks");
    for (std::size_t i = 0; finite && i < left.size(); ++i)
        require(std::isfinite(left[i]) && std::isfinite(right[i]), "output is finite");
}

void require_impulse(tesk::instance& instance, double rate) {
    std::vector<double> left(1), right(1);
    run(instance, left, right, false);  // room in the queue: a full one drops changes
    for (const auto& row : kv7::orv::attribute_table)
        instance.set(row.info.name, row.default_value);
    for (const auto& [name, value] : {std::pair{"delay", 0.01}, {"feedback", 0.0}})
        instance.set(name, value);
    const auto place = static_cast<std::size_t>(rate * 0.01);
    for (const bool impulse : {false, true}) {  // silence first, over the ramps
        if (impulse) instance.send("reset");
        left.assign(place + 200, 0.0);
        right = left;
        if (impulse) left[0] = 0.01;
        run(instance, left, right, impulse);
    }
    double heard = 0.0;
    for (std::size_t n = 0; n < left.size(); ++n) {
        const bool near = n + 3 >= place && n <= place + 3;
        if (near) heard += left[n];
        require((near || std::abs(left[n]) < 1e-7) && std::abs(right[n]) < 1e-7,
                "silence around the impulse, frame " + std::to_string(n) + ": " +
                    std::to_string(left[n]) + " " + std::to_string(right[n]));
    }
    require(std::abs(heard - 0.01) < 1e-4,
            "the impulse is as loud as it came: " + std::to_string(heard));
}

}  // namespace fuzz
