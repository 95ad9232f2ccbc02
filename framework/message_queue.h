// Carries elements from exactly one producer thread to exactly one consumer thread, without locks.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace kv7::ply {

// A circular list of blocks, each a ring of slots. A small queue is one block linked to itself; a
// large one moves from block to block, so that no allocation is larger than one block.
//
// Invariants, which the comments below refer to by number:
//   1. A slot holds an element exactly while its index lies in [read_index, write_index) of its
//      block, modulo the block's slots; one slot of a block is always free.
//   2. Only the producer writes write_block_ and a block's write_index and cached_read_index; only
//      the consumer writes read_block_ and a block's read_index and cached_write_index.
//   3. A cached index is an older value of the index it copies. It errs on the safe side: the
//      producer sees at most as many free slots, the consumer at most as many elements as there
//      are.
//   4. The producer writes into write_block_ alone and leaves it only when it is full; the consumer
//      reads from read_block_ alone and leaves it only when it is empty and not the write_block_.
//      Blocks between the two, in the order of next, are full; those outside are empty.
//   5. An element is complete before the index or block that publishes it, and emptied before the
//      index or block that frees it: each release store below has its acquire load on the other
//      side, so this holds on weakly ordered processors, too.
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
    // Orders construction and destruction with the threads that use the queue in between.
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
        // Acquires the emptied slots before the index (5).
        block->cached_read_index = block->read_index.load(std::memory_order_acquire);
        if (block->after(index) == block->cached_read_index) {
            ring_block* const next = block->next;
            // Acquires the block as the consumer left it: empty (4, 5).
            if (next == read_block_.load(std::memory_order_acquire)) return false;
            index = next->write_index.load(std::memory_order_relaxed);
            next->cached_read_index = next->read_index.load(std::memory_order_relaxed);
            ::new (static_cast<void*>(next->slots[index].bytes)) T(std::move(element));
            next->write_index.store(next->after(index), std::memory_order_release);
            // Publishes the element with its block (5).
            write_block_.store(next, std::memory_order_release);
            return true;
        }
    }
    ::new (static_cast<void*>(block->slots[index].bytes)) T(std::move(element));
    // Publishes the element (5).
    block->write_index.store(block->after(index), std::memory_order_release);
    return true;
}

template <class T>
bool message_queue<T>::holds_front(ring_block& block) noexcept {
    const std::size_t index = block.read_index.load(std::memory_order_relaxed);
    if (index != block.cached_write_index) return true;
    // Acquires the elements before the index (5).
    block.cached_write_index = block.write_index.load(std::memory_order_acquire);
    return index != block.cached_write_index;
}

template <class T>
typename message_queue<T>::ring_block* message_queue<T>::block_to_read() noexcept {
    ring_block* block = read_block_.load(std::memory_order_relaxed);
    if (holds_front(*block)) return block;
    if (block == write_block_.load(std::memory_order_acquire)) return nullptr;
    // Having seen the producer leave, acquires all that it wrote here: it may have filled this
    // block after the first test and only then moved on (4).
    if (holds_front(*block)) return block;
    block = block->next;
    // Publishes the emptied block, which the producer may enter again (5).
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
    // Publishes the emptied slot (5).
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
