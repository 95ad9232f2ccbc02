// The floating-point state that audio is computed in: results rounded to nearest, denormals kept,
// no traps. It is the state in which a program starts, and the only one that every platform has.
//
// A host may run its audio thread in another, most often with denormals flushed to zero. The sound
// would then differ some half a minute into silence, when the feedback loop and the reverb's tank
// have decayed to denormals. So whoever calls the engine holds a StandardFloatingPoint meanwhile.
#pragma once

#include <cstdint>

namespace orvane::blocks::vesk {

class StandardFloatingPoint {
public:
    StandardFloatingPoint() noexcept : callers_(read()) {
        if (!is_standard(callers_)) write(standard);
    }
    ~StandardFloatingPoint() {
        if (!is_standard(callers_)) write(callers_);
    }
    StandardFloatingPoint(const StandardFloatingPoint&) = delete;
    StandardFloatingPoint& operator=(const StandardFloatingPoint&) = delete;

private:
#if defined(__x86_64__)
    using Register = std::uint32_t;                 // MXCSR
    static constexpr Register standard = 0x1F80;    // all traps masked
    static constexpr Register sticky_flags = 0x3F;  // which exceptions have occurred
    static Register read() noexcept {
        return __builtin_ia32_stmxcsr();
    }
    static void write(Register x) noexcept {
        __builtin_ia32_ldmxcsr(x);
    }
#elif defined(__aarch64__)
    using Register = std::uint64_t;  // FPCR
    static constexpr Register standard = 0;
    static constexpr Register sticky_flags = 0;
    static Register read() noexcept {
        Register x;
        asm volatile("mrs %0, fpcr" : "=r"(x));
        return x;
    }
    static void write(Register x) noexcept {
        asm volatile("msr fpcr, %0" : : "r"(x));
    }
#else
    // WebAssembly has no other state.
    using Register = std::uint32_t;
    static constexpr Register standard = 0;
    static constexpr Register sticky_flags = 0;
    static Register read() noexcept {
        return standard;
    }
    static void write(Register) noexcept {}
#endif
    static bool is_standard(Register x) noexcept {
        return (x & ~sticky_flags) == standard;
    }

    const Register callers_;
};

}  // namespace orvane::blocks::vesk
