// While it lives, a signal handler comes every 50 us, between any two instructions of the program:
// a race with one thread, which needs no luck and no second processor.
#pragma once

#include <sys/time.h>

#include <csignal>

class Interruptions {
public:
    explicit Interruptions(void (*handler)(int)) {
        std::signal(SIGALRM, handler);
        set({{0, 50}, {0, 50}});
    }
    ~Interruptions() { set({}); }

private:
    static void set(const itimerval& every) { setitimer(ITIMER_REAL, &every, nullptr); }
};
