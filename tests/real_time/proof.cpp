// Plays the object under the guard, which counts every heap call, lock and system call inside
// perform: each attribute, message and mode, a full queue and rebuilds, then all of it with audio
// and main thread side by side. The count must stay 0. Before that the guard is shown to count.
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "any_value.h"
#include "host/host.h"
#include "vesk_driver.h"

extern "C" {
void rt_enter();
void rt_leave();
long rt_hits();
long rt_vectors();
bool rt_traps_system_calls();
}

namespace {

using namespace kv7::orv;

bool failed = false;

void expect(bool kept, const std::string& what) {
    std::printf("  %s  %s\n", kept ? "ok    " : "BROKEN", what.c_str());
    failed = failed || !kept;
}

// Keeps what is only made to be freed.
template <class T>
T* used(T* memory) {
    asm volatile("" : : "r"(memory) : "memory");
    return memory;
}

void show_the_guard() {
    std::puts("The guard counts what is done inside, and nothing outside:");
    static std::mutex mutex;
    static std::string text;
    constexpr std::align_val_t line{64};
    struct {
        const char* name;
        void (*act)();
        bool is_system_call = false;
    } const rows[] = {
        {"new and delete", [] { delete used(new int); }},
        {"aligned new and delete", [] { ::operator delete(used(::operator new(64, line)), line); }},
        {"calloc, realloc and free", [] { std::free(std::realloc(used(std::calloc(1, 8)), 64)); }},
        {"a string that grows", [] { text += "longer than what fits into a string itself"; }},
        {"std::mutex", [] { const std::lock_guard lock(mutex); }},
        {"sleep", [] { std::this_thread::sleep_for(std::chrono::nanoseconds(1)); }, true},
        {"yield", [] { std::this_thread::yield(); }, true},
        {"a system call by number", [] { syscall(SYS_getppid); }, true},
    };
    // Their stacks are not asked for.
    std::fflush(stderr);
    const int kept = dup(2);
    used(freopen("/dev/null", "w", stderr));
    for (const auto& row : rows) {
        row.act();
        const long outside = rt_hits();
        rt_enter();
        row.act();
        rt_leave();
        const long inside = rt_hits();
        if (row.is_system_call && !rt_traps_system_calls()) {
            std::printf("  not shown: %s (this kernel cannot hand system calls back)\n", row.name);
            continue;
        }
        expect(outside == 0 && inside > 0, row.name);
    }
    std::fflush(stderr);
    dup2(kept, 2);
    close(kept);
}

void set_at_random(Dice& dice, tesk::instance& instance, const attribute_row& row) {
    instance.set(row.info.name, {any_value(dice, row), any_value(dice, row)});
}

void report(const std::string& what) {
    const long hits = rt_hits();
    const long vectors = rt_vectors();
    expect(hits == 0 && vectors > 0, what + ": " + std::to_string(hits) + " calls in " +
                                         std::to_string(vectors) + " vectors");
}

void play_everything(tesk::instance& instance) {
    Dice dice(2);
    const auto play = [&](int frames, int count) {
        for (int n = 0; n < count; ++n) {
            double left[777], right[777];
            for (int i = 0; i < frames; ++i) left[i] = dice.swing(), right[i] = dice.swing();
            double* const channels[2] = {left, right};
            if (!instance.run(channels, channels, frames)) expect(false, "a vector was not played");
        }
    };
    const auto settle = [&] {
        for (const auto& [frames, count] : {std::pair{1, 3}, {64, 8}, {777, 2}, {0, 1}})
            play(frames, count);
    };
    for (const attribute_row& row : attribute_table)
        for (int n = 0; n < 8; ++n) {
            set_at_random(dice, instance, row);
            settle();
        }
    report("every attribute, to its ends and between");

    for (int n = 0; n < 2000; ++n) {
        for (int k = dice.below(8); k > 0; --k) set_at_random(dice, instance, any_attribute(dice));
        play(64, 3);
    }
    report("attributes in any combination");

    for (const tesk::method_info& method : instance.described().methods)
        for (const char* values : {"", " 1", " 0.5 x"}) {
            instance.send(method.name + values);
            play(64, 2);
        }
    report("every message");

    for (int n = 0; n < 700; ++n) instance.set("delay", {0.001 * n, 0.5});
    settle();
    report("a queue that overran");

    for (const double rate : {96000.0, 44100.0, 192000.0, 8000.0, 48000.0}) {
        instance.prepare(rate, 64);
        settle();
    }
    report("new rates");
}

void play_side_by_side(tesk::instance& instance, bool guarded) {
    tesk::host::the().set_perform_guarded_by_dsp64(guarded);
    Dice input(3), dice(4);
    tesk::audio_thread audio(instance, {64, true, [&input](std::int64_t, double* const* inputs) {
                                            for (int c = 0; c < 2; ++c)
                                                for (int i = 0; i < 64; ++i)
                                                    inputs[c][i] = input.swing();
                                        }});
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    int rebuilds = 0;
    while (std::chrono::steady_clock::now() < end) {
        for (int k = 0; k < 30; ++k) set_at_random(dice, instance, any_attribute(dice));
        instance.send(dice.below(2) == 0 ? "clear" : "reset");
        if (dice.below(4) == 0) instance.prepare(8000.0 + 4000.0 * (++rebuilds % 5), 64);
        tesk::host::the().serve();
        std::this_thread::sleep_for(std::chrono::milliseconds(dice.below(4)));
    }
    audio.stop();
    report("alongside a main thread that sets and made " + std::to_string(rebuilds) + " rebuilds" +
           (guarded ? "" : ", perform not held off by the host"));
}

}  // namespace

int main() {
    show_the_guard();
    std::printf("System calls are %s.\n", rt_traps_system_calls()
                                              ? "trapped by the kernel"
                                              : "NOT trapped, which this kernel does not offer");
    const std::string name = tesk::host::the().load(VESK_OBJECT_FILE);
    const auto instance = tesk::host::the().make(name);
    expect(instance->prepare(48000.0, 64), "the object is ready");
    rt_vectors();
    std::puts("Inside perform:");
    play_everything(*instance);
    for (const bool guarded : {true, false}) play_side_by_side(*instance, guarded);
    return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
