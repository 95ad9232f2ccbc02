// A library loaded before the C library: between rt_enter() and rt_leave(), which the host calls
// around perform, it counts every call of the heap and of locks, and every system call whatever its
// way, and prints the stack of the first ones.
#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/prctl.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#define GUARD_EXPORT extern "C" __attribute__((visibility("default")))
// Without the model the first access would allocate.
#define GUARD_THREAD thread_local __attribute__((tls_model("initial-exec")))

extern "C" {
void* __libc_malloc(std::size_t);
void __libc_free(void*);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {

GUARD_THREAD int depth = 0;
GUARD_THREAD bool dispatching = false;        // asked for on this thread
GUARD_THREAD volatile char system_calls = 0;  // the kernel's selector: 0 allowed, 1 trapped
std::atomic<bool> traps_system_calls{false};
std::atomic<long> hits{0};
std::atomic<long> vectors{0};

constexpr int set_dispatch = 59;  // of prctl; older headers have no names for it
constexpr int dispatch_on = 1;

void hit(const char* what) {
    const int inside = depth;
    const char trapped = system_calls;
    depth = 0;
    system_calls = 0;
    constexpr long most_printed = 5;
    if (hits.fetch_add(1) < most_printed) {
        std::fprintf(stderr, "real-time guard: %s in perform\n", what);
        void* frames[24];
        backtrace_symbols_fd(frames, backtrace(frames, 24), 2);
    }
    system_calls = trapped;
    depth = inside;
}

void check(const char* what) {
    if (depth > 0) hit(what);
}

// The call is counted and then made: the processor goes back onto its instruction.
void take_system_call(int, siginfo_t*, void* context) {
    system_calls = 0;  // until the next rt_enter: the return from here is a system call too
    hit("system call");
#if defined(__x86_64__)
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] -= 2;
#else
    static_cast<void>(context);
#endif
}

__attribute__((constructor)) void prepare() {
    void* frame[1];
    backtrace(frame, 1);  // loads what it needs now
    struct sigaction action {};
    action.sa_sigaction = take_system_call;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSYS, &action, nullptr);
}

}  // namespace

GUARD_EXPORT void rt_enter() {
#if defined(__x86_64__)
    if (!dispatching) {
        dispatching = true;
        if (prctl(set_dispatch, dispatch_on, 0L, 0L, &system_calls) == 0) traps_system_calls = true;
    }
#endif
    vectors.fetch_add(1, std::memory_order_relaxed);
    ++depth;
    system_calls = 1;
}
GUARD_EXPORT void rt_leave() {
    system_calls = 0;
    --depth;
}
GUARD_EXPORT long rt_hits() {
    return hits.exchange(0);
}
GUARD_EXPORT long rt_vectors() {
    return vectors.exchange(0);
}
GUARD_EXPORT bool rt_traps_system_calls() {
    return traps_system_calls;
}

// Counted, then made under its other name.
#define GUARDED_HEAP(name, parameters, real)      \
    GUARD_EXPORT void* name parameters noexcept { \
        check(#name);                             \
        return real;                              \
    }
GUARDED_HEAP(malloc, (std::size_t size), __libc_malloc(size))
GUARDED_HEAP(calloc, (std::size_t count, std::size_t size), __libc_calloc(count, size))
GUARDED_HEAP(realloc, (void* memory, std::size_t size), __libc_realloc(memory, size))
GUARDED_HEAP(aligned_alloc, (std::size_t to, std::size_t size), __libc_memalign(to, size))
GUARDED_HEAP(memalign, (std::size_t to, std::size_t size), __libc_memalign(to, size))
GUARD_EXPORT void free(void* memory) noexcept {
    if (memory != nullptr) check("free");
    __libc_free(memory);
}
GUARD_EXPORT int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
    check("posix_memalign");
    *memory = __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}

// Counted, then made in the library loaded next.
#define GUARDED_LOCK(name, parameters, arguments)                                              \
    GUARD_EXPORT int name parameters {                                                         \
        static const auto real = reinterpret_cast<int(*) parameters>(dlsym(RTLD_NEXT, #name)); \
        check(#name);                                                                          \
        return real arguments;                                                                 \
    }
GUARDED_LOCK(pthread_mutex_lock, (pthread_mutex_t * mutex) noexcept, (mutex))
GUARDED_LOCK(pthread_rwlock_rdlock, (pthread_rwlock_t * lock) noexcept, (lock))
GUARDED_LOCK(pthread_rwlock_wrlock, (pthread_rwlock_t * lock) noexcept, (lock))
GUARDED_LOCK(pthread_cond_wait, (pthread_cond_t * until, pthread_mutex_t* mutex), (until, mutex))
GUARDED_LOCK(pthread_cond_signal, (pthread_cond_t * condition) noexcept, (condition))
GUARDED_LOCK(sem_wait, (sem_t * semaphore), (semaphore))
