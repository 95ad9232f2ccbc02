// Carries elements from exactly one producer thread to exactly one consumer thread, without locks.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace kv7::ply {

// A circle of blocks, each a ring of slots. A small queue is one block linked to itself; a large
// one moves from block to block, so that no allocation is larger than one block.
template <class T>
class message_queue {
public:
    explicit message_queue(std::size_t capacity);  // slots: next power of two; one stays free
    ~message_queue();
    message_queue(const message_queue&) = delete;
    message_queue& operator=(const message_queue&) = delete;

    bool enqueue(T element);   // producer; false when full; never allocates
    bool dequeue(T& element);  // consumer; false when empty
    T* peek();                 // consumer; null when empty

private:
    static constexpr std::size_t cache_line = 64;
    static constexpr std::size_t largest_single_block = 1024;  // slots
    static constexpr std::size_t slots_of_many = 512;          // a block's slots beyond that

    struct slot {
        alignas(T) std::byte bytes[sizeof(T)];
        T* element() noexcept { return std::launder(reinterpret_cast<T*>(bytes)); }
    };

    struct ring_block {
        alignas(cache_line) std::atomic<std::size_t> read_index{0};   // written by the consumer
        std::size_t cached_write_index = 0;                           // the consumer's copy
        alignas(cache_line) std::atomic<std::size_t> write_index{0};  // written by the producer
        std::size_t cached_read_index = 0;                            // the producer's copy
        ring_block* next = nullptr;
        std::unique_ptr<slot[]> slots;
        std::size_t mask = 0;  // slots - 1

        explicit ring_block(std::size_t count) : slots(new slot[count]), mask(count - 1) {}
        std::size_t after(std::size_t index) const noexcept { return (index + 1) & mask; }
    };

    ring_block* block_to_read() noexcept;  // the block whose front is the queue's; null when empty
    static bool holds_front(ring_block& block) noexcept;

    std::vector<std::unique_ptr<ring_block>> blocks_;
    alignas(cache_line) std::atomic<ring_block*> read_block_{nullptr};
    alignas(cache_line) std::atomic<ring_block*> write_block_{nullptr};
    // Whoever makes or ends the queue is ordered with the threads that use it between.
    std::atomic<bool> fence_{false};
};

template <class T>
message_queue<T>::message_queue(std::size_t capacity) {
    std::size_t slots = capacity;
    for (std::size_t shift = 1; shift < 8 * sizeof slots; shift *= 2) slots |= slots >> shift;
    ++slots;
    std::size_t count = 1;
    if (slots > largest_single_block) {
        count = (capacity + 2 * slots_of_many - 3) / (slots_of_many - 1);
        slots = slots_of_many;
    }
    blocks_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) blocks_.push_back(std::make_unique<ring_block>(slots));
    for (std::size_t i = 0; i < count; ++i) blocks_[i]->next = blocks_[(i + 1) % count].get();
    read_block_.store(blocks_.front().get(), std::memory_order_relaxed);
    write_block_.store(blocks_.front().get(), std::memory_order_relaxed);
    fence_.exchange(true, std::memory_order_seq_cst);
}

template <class T>
message_queue<T>::~message_queue() {
    fence_.exchange(false, std::memory_order_seq_cst);
    for (const auto& block : blocks_) {
        const std::size_t end = block->write_index.load(std::memory_order_relaxed);
        for (std::size_t i = block->read_index.load(std::memory_order_relaxed); i != end;
             i = block->after(i))
            std::destroy_at(block->slots[i].element());
    }
}

template <class T>
bool message_queue<T>::enqueue(T element) {
    ring_block* block = write_block_.load(std::memory_order_relaxed);
    std::size_t index = block->write_index.load(std::memory_order_relaxed);
    if (block->after(index) == block->cached_read_index) {
        // The consumer has emptied the slots before the index it shows.
        block->cached_read_index = block->read_index.load(std::memory_order_acquire);
        if (block->after(index) == block->cached_read_index) {
            ring_block* const next = block->next;
            // Once the consumer has left a block, everything in it has been taken out.
            if (next == read_block_.load(std::memory_order_acquire)) return false;
            index = next->write_index.load(std::memory_order_relaxed);
            next->cached_read_index = next->read_index.load(std::memory_order_relaxed);
            ::new (static_cast<void*>(next->slots[index].bytes)) T(std::move(element));
            next->write_index.store(next->after(index), std::memory_order_release);
            // The element is complete before the block that shows it.
            write_block_.store(next, std::memory_order_release);
            return true;
        }
    }
    ::new (static_cast<void*>(block->slots[index].bytes)) T(std::move(element));
    // The slot is complete before the index that shows it.
    block->write_index.store(block->after(index), std::memory_order_release);
    return true;
}

template <class T>
bool message_queue<T>::holds_front(ring_block& block) noexcept {
    const std::size_t index = block.read_index.load(std::memory_order_relaxed);
    if (index != block.cached_write_index) return true;
    // Every element before the index that the producer shows may be read.
    block.cached_write_index = block.write_index.load(std::memory_order_acquire);
    return index != block.cached_write_index;
}

template <class T>
typename message_queue<T>::ring_block* message_queue<T>::block_to_read() noexcept {
    ring_block* block = read_block_.load(std::memory_order_relaxed);
    if (holds_front(*block)) return block;
    if (block == write_block_.load(std::memory_order_acquire)) return nullptr;
    // The producer may have filled this block after the first look and only then moved on.
    if (holds_front(*block)) return block;
    block = block->next;
    // The emptied block is finished with before the producer may enter it again.
    read_block_.store(block, std::memory_order_release);
    return holds_front(*block) ? block : nullptr;
}

template <class T>
bool message_queue<T>::dequeue(T& element) {
    ring_block* const block = block_to_read();
    if (block == nullptr) return false;
    const std::size_t index = block->read_index.load(std::memory_order_relaxed);
    T* const front = block->slots[index].element();
    element = std::move(*front);
    std::destroy_at(front);
    // The slot is empty before the index that gives it back.
    block->read_index.store(block->after(index), std::memory_order_release);
    return true;
}

template <class T>
T* message_queue<T>::peek() {
    ring_block* const block = block_to_read();
    if (block == nullptr) return nullptr;
    return block->slots[block->read_index.load(std::memory_order_relaxed)].element();
}

}  // namespace kv7::ply
