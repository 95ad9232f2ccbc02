// From the system: glibc's heap keeps what is freed, and after some instances have come and gone
// that is nearly all of their rings.
//
// A large ring has a mapping of its own. The small ones, the reverb's, share pages of 2 MiB where
// the system grants such: a block passes thirty places in them, and of many instances in turn each
// would need thirty more addresses of 4 KiB pages than the processor keeps translated (TLB).
#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "engine/ring_memory.h"

namespace orvane::blocks::vesk {
namespace {

constexpr std::size_t cache_line = 64;
constexpr std::size_t smallest_mapping = std::size_t{1} << 19;
constexpr std::size_t huge_page = std::size_t{1} << 21;

// Readable, writable, zeros.
void* map(std::size_t bytes, int flags) {
    void* const memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return memory;
}

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

// Rings one after the other in huge pages. A page is given back when its last ring is released.
class SharedPages {
public:
    void* take(std::size_t bytes) {
        const std::size_t rounded = (bytes + cache_line - 1) / cache_line * cache_line;
        const std::lock_guard lock(mutex_);
        if (page_ == nullptr || page_->used + rounded > huge_page) page_ = map_page();
        void* const ring = reinterpret_cast<std::byte*>(page_) + page_->used;
        page_->used += rounded;
        ++page_->rings;
        return ring;
    }
    void give(void* ring) noexcept {
        auto* const page =
            reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(ring) / huge_page * huge_page);
        const std::lock_guard lock(mutex_);
        if (--page->rings != 0) return;
        page->used = sizeof(Page);
        if (page != page_) munmap(page, huge_page);
    }

private:
    // At the beginning of each page.
    struct alignas(cache_line) Page {
        std::size_t used = sizeof(Page);  // bytes
        std::size_t rings = 0;
    };
    static_assert(sizeof(Page) + smallest_mapping <= huge_page);

    // The system aligns to its small pages only, so twice as much is mapped and cut.
    static Page* map_page() {
        auto* const begin = static_cast<std::byte*>(map(2 * huge_page, MAP_NORESERVE));
        const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) % huge_page;
        if (before != 0) munmap(begin, before);
        munmap(begin + before + huge_page, huge_page - before);
        madvise(begin + before, huge_page, MADV_HUGEPAGE);  // refused: small pages
        return new (begin + before) Page;
    }

    std::mutex mutex_;
    Page* page_ = nullptr;  // the one that is being filled
};

// Never destroyed: an engine may live until the very end of the program.
constinit Spares spares;
constinit SharedPages shared_pages;

}  // namespace

void* allocate_ring(std::size_t bytes) {
    if (bytes < smallest_mapping) return std::memset(shared_pages.take(bytes), 0, bytes);
    if (void* const spare = spares.take(bytes)) return std::memset(spare, 0, bytes);
    return map(bytes, MAP_POPULATE);
}

void release_ring(void* memory, std::size_t bytes) noexcept {
    if (bytes < smallest_mapping)
        shared_pages.give(memory);
    else
        spares.give({memory, bytes});
}

}  // namespace orvane::blocks::vesk
