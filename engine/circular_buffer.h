// The ring behind the delay lines, the read heads' entries and the reverb.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "engine/block.h"
#include "engine/lanes.h"
#include "engine/ring_memory.h"

namespace orvane::blocks::vesk {

// A ring that grows towards lower indices: head is the index of the newest element, and the
// element k pushes older is k indices above it. So a block of elements, newest first, is one
// ascending range of memory. The first max_block elements are repeated after the last one, so that
// such a range can be read and written without a wrap, wherever it begins.
//
// A block's range may be at most as long as the ring.
template <class T>
struct CircularBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

    RingStorage<T> storage;  // size elements, then the first max_block repeated
    std::uint64_t size = 0;  // elements
    std::uint64_t head = 0;  // index of the newest element

    CircularBuffer() = default;
    explicit CircularBuffer(std::uint64_t elements);  // zeros; throws std::bad_alloc

    VESK_INLINE void push(T value) noexcept {
        *write_pointer(1) = value;
        advance(1);
    }
    // Oldest first: the last value becomes the newest element.
    VESK_INLINE void push(const T* values, std::uint64_t count) noexcept {
        constexpr std::uint64_t per_vector = sizeof(Oct) / sizeof(T);
        T* const to = write_pointer(count);
        std::uint64_t i = 0;
        for (; i + per_vector <= count; i += per_vector)
            store(to + count - i - per_vector, reverse<sizeof(T)>(load<Oct>(values + i)));
        for (; i < count; ++i) to[count - i - 1] = values[i];
        advance(count);
    }
    // Where the next count elements are to be written, newest first. Until then the range holds
    // the count oldest elements; advance(count) makes the written ones the newest.
    VESK_INLINE T* write_pointer(std::uint64_t count) const noexcept {
        return storage.get() + head_after(count);
    }
    VESK_INLINE void advance(std::uint64_t count) noexcept {
        head = head_after(count);
        if (head < repeated || head + count > size) [[unlikely]]
            update_repeated(count);
    }

    // k is below size at every call, so one subtraction is enough to wrap.
    VESK_INLINE std::uint64_t index(std::uint64_t k) const noexcept {
        const std::uint64_t i = head + k;
        return i >= size ? i - size : i;
    }
    VESK_INLINE const T& at(std::uint64_t k) const noexcept { return storage[index(k)]; }
    // To the element k pushes older than the newest; older ones follow it.
    VESK_INLINE const T* pointer_at(std::uint64_t k) const noexcept {
        return storage.get() + index(k);
    }

    void zero() noexcept;  // contents only: head and size stay

private:
    static constexpr std::uint64_t repeated = max_block;

    VESK_INLINE std::uint64_t head_after(std::uint64_t count) const noexcept {
        return (head < count ? head + size : head) - count;
    }
    // After count elements from head on were written past the ring's end or among its first ones.
    VESK_INLINE void update_repeated(std::uint64_t count) noexcept {
        const std::uint64_t end = head + count;
        for (std::uint64_t i = size; i < end; ++i) storage[i - size] = storage[i];
        const std::uint64_t first = min(min(end, size), repeated);
        for (std::uint64_t i = head; i < first; ++i) storage[size + i] = storage[i];
    }
};

template <class T>
CircularBuffer<T>::CircularBuffer(std::uint64_t elements)
    : storage(ring_of<T>(static_cast<std::size_t>(elements + repeated))), size(elements) {}

template <class T>
void CircularBuffer<T>::zero() noexcept {
    for (std::uint64_t i = 0; i < size + repeated; ++i) storage[i] = T{};
}

}  // namespace orvane::blocks::vesk
