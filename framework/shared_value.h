// A value that one thread writes and any thread reads, without a lock.
#pragma once

#include <atomic>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace kv7::ply {

// Small values are atomics: any thread may write them.
template <class T>
class shared_value {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit shared_value(T value) : value_(value) {}
    T load() const noexcept { return value_.load(std::memory_order_relaxed); }
    void store(T value) noexcept { value_.store(value, std::memory_order_relaxed); }

private:
    std::atomic<T> value_;
};

// A list is an immutable copy behind an atomic pointer. A copy that was replaced is freed by a
// later store, once no reader is inside: a reader that enters after the exchange finds the new one.
template <class Item>
class shared_value<std::vector<Item>> {
public:
    explicit shared_value(std::vector<Item> value)
        : current_(new const std::vector<Item>(std::move(value))) {}
    ~shared_value() { delete current_.load(std::memory_order_relaxed); }
    shared_value(const shared_value&) = delete;
    shared_value& operator=(const shared_value&) = delete;

    std::vector<Item> load() const {  // any thread
        const reader inside(readers_);
        return *current_.load(std::memory_order_seq_cst);
    }
    void store(std::vector<Item> value) {  // one thread
        retired_.reserve(retired_.size() + 1);
        auto next = std::make_unique<const std::vector<Item>>(std::move(value));
        // Sequentially consistent with a reader's entry: when the count is 0 after the exchange,
        // every later reader loads the new pointer.
        retired_.emplace_back(current_.exchange(next.release(), std::memory_order_seq_cst));
        if (readers_.load(std::memory_order_seq_cst) == 0) retired_.clear();
    }

private:
    struct reader {
        explicit reader(std::atomic<int>& count) : count_(count) {
            count_.fetch_add(1, std::memory_order_seq_cst);
        }
        // The copy is finished before the count that lets it be freed.
        ~reader() { count_.fetch_sub(1, std::memory_order_release); }
        reader(const reader&) = delete;
        reader& operator=(const reader&) = delete;
        std::atomic<int>& count_;
    };

    std::atomic<const std::vector<Item>*> current_;
    mutable std::atomic<int> readers_{0};
    std::vector<std::unique_ptr<const std::vector<Item>>> retired_;  // the storing thread's
};

}  // namespace kv7::ply
