// From the system where they are large: glibc's heap keeps what is freed, and after some instances
// have come and gone that is nearly all of their rings.
#include <sys/mman.h>

#include <array>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "engine/ring_memory.h"

namespace orvane::blocks::vesk {
namespace {

constexpr std::align_val_t cache_line{64};
constexpr std::size_t smallest_mapping = std::size_t{1} << 19;

struct Mapping {
    void* memory = nullptr;
    std::size_t bytes = 0;
};

void unmap(const Mapping& mapping) noexcept {
    if (mapping.memory != nullptr) munmap(mapping.memory, mapping.bytes);
}

// The mappings that were released last, at most as many as two engines have: whoever renders file
// after file makes and frees as many each time, and to map them costs ten times what it costs to
// clear them.
class Spares {
public:
    // Null: there is none of this size.
    void* take(std::size_t bytes) noexcept {
        const std::lock_guard lock(mutex_);
        for (Mapping& kept : kept_)
            if (kept.bytes == bytes) return std::exchange(kept, {}).memory;
        return nullptr;
    }
    void give(const Mapping& released) noexcept {
        Mapping oldest;
        {
            const std::lock_guard lock(mutex_);
            oldest = std::exchange(kept_[next_], released);
            next_ = (next_ + 1) % kept_.size();
        }
        unmap(oldest);
    }

private:
    std::mutex mutex_;
    std::array<Mapping, 8> kept_{};
    std::size_t next_ = 0;
};

// Never destroyed: an engine may live until the very end of the program.
constinit Spares spares;

}  // namespace

void* allocate_ring(std::size_t bytes) {
    if (bytes < smallest_mapping) return std::memset(::operator new(bytes, cache_line), 0, bytes);
    if (void* const spare = spares.take(bytes)) return std::memset(spare, 0, bytes);
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return memory;
}

void release_ring(void* memory, std::size_t bytes) noexcept {
    if (bytes < smallest_mapping)
        ::operator delete(memory, cache_line);
    else
        spares.give({memory, bytes});
}

}  // namespace orvane::blocks::vesk
