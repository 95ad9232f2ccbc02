#include "trapped.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sanitizer/allocator_interface.h>

#include <cmath>
#include <vector>

#include "vesk_driver.h"

namespace {

bool inside = false;
long calls = 0;

void count_new(const volatile void*, std::size_t) {
    if (inside) ++calls;
}
void count_free(const volatile void* memory) {
    if (inside && memory != nullptr) ++calls;
}

[[maybe_unused]] const int hooks = __sanitizer_install_malloc_and_free_hooks(count_new, count_free);

}  // namespace

extern "C" {
__attribute__((visibility("default"))) void rt_enter() {
    inside = true;
}
__attribute__((visibility("default"))) void rt_leave() {
    inside = false;
}
__attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto next =
        reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (inside) ++calls;
    return next(mutex);
}
}

namespace fuzz {

long calls_in_perform() {
    return calls;
}

void run(tesk::instance& instance, double* const* channels, int frames) {
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
    require(instance.run(channels, channels, frames), "every vector is played");
    require(calls == 0, "perform touches neither heap nor locks");
}

void require_impulse(tesk::instance& instance, double rate) {
    using namespace kv7::orv;
    double frame[2] = {};
    double* const one_frame[2] = {&frame[0], &frame[1]};
    run(instance, one_frame, 1);  // room in the queue: a full one drops changes
    for (const attribute_row& row : attribute_table) instance.set(row.info.name, row.default_value);
    instance.set("delay", 0.01);
    instance.set("feedback", 0.0);
    instance.set("mod_delay", 0.0);
    const int place = static_cast<int>(rate * 0.01);
    const int frames = place + 200;
    std::vector<double> left, right;
    for (const bool impulse : {false, true}) {  // silence first, over the ramps
        if (impulse) instance.send("reset");
        left.assign(static_cast<std::size_t>(frames), 0.0);
        right = left;
        if (impulse) left[0] = 0.01;
        double* const channels[2] = {left.data(), right.data()};
        run(instance, channels, frames);
    }
    double heard = 0.0;
    for (int n = 0; n < frames; ++n) {
        const double x = left[static_cast<std::size_t>(n)];
        if (std::abs(n - place) <= 3) {
            heard += x;
            continue;
        }
        require(std::abs(x) < 1e-7, "silence around the impulse, frame " + std::to_string(n) +
                                        ": " + std::to_string(x));
    }
    require(std::abs(heard - 0.01) < 1e-4,
            "the impulse is as loud as it came: " + std::to_string(heard));
    for (const double x : right) require(std::abs(x) < 1e-7, "the other channel is silent");
}

}  // namespace fuzz
