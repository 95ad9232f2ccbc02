// The ring of the delay lines, of the rate entries and of the reverb.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "engine/block.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// A ring that grows towards lower indices: head is the newest element, and the element k places
// older stands k places above it. Its first elements stand once more behind its end, so that a run
// of elements lies in one piece wherever it begins; a ring as long as the run at least.
//
// A large ring starts on a page of its own, and rings that are read in step must not start at the
// same place of their pages (they would share one cache set and every read would seem to follow the
// last write), so each starts some cache lines further on.
template <class T>
struct CircularBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

    struct Release {
        std::size_t bytes_before = 0;
        void operator()(T* p) const noexcept {
            ::operator delete(reinterpret_cast<std::byte*>(p) - bytes_before, alignment);
        }
    };

    std::unique_ptr<T[], Release> storage;  // size elements, and those that stand there once more
    std::uint64_t size = 0;                 // elements
    std::uint64_t head = 0;                 // index of the newest element

    CircularBuffer() = default;
    explicit CircularBuffer(std::uint64_t elements);  // zeros; throws std::bad_alloc

    VESK_INLINE void push(T value) noexcept {
        *room(1) = value;
        pushed(1);
    }
    // In order, the last value becomes the newest.
    VESK_INLINE void push(const T* values, std::uint64_t count) noexcept {
        constexpr std::uint64_t at_once = sizeof(Oct) / sizeof(T);
        T* const to = room(count);
        std::uint64_t i = 0;
        for (; i + at_once <= count; i += at_once)
            store(to + count - i - at_once, reverse<sizeof(T)>(load<Oct>(values + i)));
        for (; i < count; ++i) to[count - i - 1] = values[i];
        pushed(count);
    }
    // Where the next count pushes go, the last one first; the oldest elements stand there. They
    // count as pushed after pushed(count).
    VESK_INLINE T* room(std::uint64_t count) const noexcept {
        return storage.get() + behind(count);
    }
    VESK_INLINE void pushed(std::uint64_t count) noexcept {
        head = behind(count);
        if (head < repeated || head + count > size) [[unlikely]]
            repeat_ends(count);
    }

    // k is below size at every call, so one subtraction is enough to wrap.
    VESK_INLINE std::uint64_t index(std::uint64_t k) const noexcept {
        const std::uint64_t i = head + k;
        return i >= size ? i - size : i;
    }
    VESK_INLINE const T& at(std::uint64_t k) const noexcept { return storage[index(k)]; }
    // The element k places older than the newest, older ones behind it.
    VESK_INLINE const T* run_at(std::uint64_t k) const noexcept { return storage.get() + index(k); }

    void zero() noexcept;  // contents only: head and size stay

private:
    static constexpr std::align_val_t alignment{64};
    static constexpr std::uint64_t repeated = max_block;

    VESK_INLINE std::uint64_t behind(std::uint64_t count) const noexcept {
        return (head < count ? head + size : head) - count;
    }
    // After a push of count elements across the ring's end or into its first elements.
    VESK_INLINE void repeat_ends(std::uint64_t count) noexcept {
        const std::uint64_t end = head + count;
        for (std::uint64_t i = size; i < end; ++i) storage[i - size] = storage[i];
        const std::uint64_t first = min(min(end, size), repeated);
        for (std::uint64_t i = head; i < first; ++i) storage[size + i] = storage[i];
    }
};

// The place in its page at which the next ring starts, in bytes; a multiple of a cache line.
std::size_t next_ring_offset() noexcept;

template <class T>
CircularBuffer<T>::CircularBuffer(std::uint64_t elements) : size(elements) {
    const std::size_t before = next_ring_offset();
    auto* const block = static_cast<std::byte*>(
        ::operator new(before + (elements + repeated) * sizeof(T), alignment));
    storage = std::unique_ptr<T[], Release>(reinterpret_cast<T*>(block + before), Release{before});
    // Written, not left to the system: no page of the ring is touched for the first time by audio.
    std::uninitialized_fill_n(storage.get(), elements + repeated, T{});
}

template <class T>
void CircularBuffer<T>::zero() noexcept {
    for (std::uint64_t i = 0; i < size + repeated; ++i) storage[i] = T{};
}

}  // namespace orvane::blocks::vesk
