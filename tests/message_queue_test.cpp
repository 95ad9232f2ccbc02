// The queue between two threads: what it holds, when it refuses, and that nothing is lost or torn.
#include "framework/message_queue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace kv7::ply {
namespace {

TEST(MessageQueue, HoldsOneLessThanItsSlotsAndTakesOneMoreAfterADequeue) {
    struct {
        std::size_t requested, held;
    } const rows[] = {
        {0, 0}, {1, 1}, {2, 3}, {3, 3}, {4, 7}, {256, 511}, {512, 1023}, {1023, 1023},
    };
    for (const auto& [requested, held] : rows) {
        SCOPED_TRACE(requested);
        message_queue<std::size_t> queue(requested);
        EXPECT_EQ(queue.peek(), nullptr);
        for (std::size_t i = 0; i < held; ++i) ASSERT_TRUE(queue.enqueue(i));
        EXPECT_FALSE(queue.enqueue(held));
        std::size_t element = 99;
        if (held == 0) {
            EXPECT_FALSE(queue.dequeue(element));
            continue;
        }
        ASSERT_NE(queue.peek(), nullptr);
        EXPECT_EQ(*queue.peek(), 0U);
        for (std::size_t i = 0; i < 3 * held; ++i) {  // round and round the ring
            ASSERT_TRUE(queue.dequeue(element));
            ASSERT_EQ(element, i);
            ASSERT_TRUE(queue.enqueue(held + i));
            ASSERT_FALSE(queue.enqueue(0));
        }
    }
}

TEST(MessageQueue, LargeOnesAreBlocksThatFillAndEmptyInTurn) {
    // 2000 is served by (2000 + 1021) / 511 = 5 blocks of 511 elements; the block being read may
    // not be entered again before it has been left.
    message_queue<int> queue(2000);
    int next_in = 0, next_out = 0, element = -1;
    for (int round = 0; round < 7; ++round) {
        while (queue.enqueue(next_in)) ++next_in;
        EXPECT_GE(next_in - next_out, 2000);
        for (int i = 0; i < 700 + 300 * round && queue.dequeue(element); ++i)
            ASSERT_EQ(element, next_out++);
    }
    while (queue.dequeue(element)) ASSERT_EQ(element, next_out++);
    EXPECT_EQ(next_out, next_in);
}

TEST(MessageQueue, DestroysWhatIsStillInside) {
    const auto shared = std::make_shared<int>(1);
    {
        message_queue<std::shared_ptr<int>> queue(4);
        for (int i = 0; i < 5; ++i) queue.enqueue(shared);
        std::shared_ptr<int> taken;
        queue.dequeue(taken);
        EXPECT_EQ(shared.use_count(), 1 + 4 + 1) << "a slot keeps nothing of what left it";
    }
    EXPECT_EQ(shared.use_count(), 1);
}

TEST(MessageQueue, CarriesEveryElementWholeAndInOrderBetweenTwoThreads) {
    for (const std::size_t capacity : {std::size_t{2}, std::size_t{256}, std::size_t{1500}}) {
        SCOPED_TRACE(capacity);
        constexpr std::uint64_t count = 100000;
        message_queue<std::vector<std::uint64_t>> queue(capacity);
        std::thread producer([&] {
            for (std::uint64_t i = 0; i < count; ++i)
                while (!queue.enqueue({i, ~i})) std::this_thread::yield();
        });
        std::vector<std::uint64_t> element;
        std::uint64_t wrong = 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            while (!queue.dequeue(element)) std::this_thread::yield();
            wrong += element.size() != 2 || element[0] != i || element[1] != ~i;
        }
        producer.join();
        EXPECT_EQ(wrong, 0U);
        EXPECT_EQ(queue.peek(), nullptr);
    }
}

}  // namespace
}  // namespace kv7::ply
