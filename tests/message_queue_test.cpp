// The queue between two threads: what it holds, when it refuses, and that nothing is lost or torn.
#include "framework/message_queue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include "interruptions.h"
#endif

namespace kv7::ply {
namespace {

TEST(MessageQueue, HoldsOneLessThanItsSlotsAndTakesOneMoreAfterADequeue) {
    const std::pair<std::size_t, std::size_t> rows[] = {{0, 0}, {1, 1},     {2, 3},
                                                        {4, 7}, {256, 511}, {1023, 1023}};
    for (const auto& [requested, held] : rows) {
        SCOPED_TRACE(requested);
        message_queue<std::size_t> queue(requested);
        std::size_t element = 99;
        EXPECT_EQ(queue.peek(), nullptr);
        EXPECT_FALSE(queue.dequeue(element));
        for (std::size_t i = 0; i < held; ++i) ASSERT_TRUE(queue.enqueue(i));
        EXPECT_FALSE(queue.enqueue(held));
        for (std::size_t i = 0; i < 3 * held; ++i) {  // round and round the ring
            ASSERT_NE(queue.peek(), nullptr);
            ASSERT_EQ(*queue.peek(), i);
            ASSERT_TRUE(queue.dequeue(element));
            ASSERT_EQ(element, i);
            ASSERT_TRUE(queue.enqueue(held + i));
            ASSERT_FALSE(queue.enqueue(0));
        }
    }
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

// 2000 is served by blocks; the one being read may not be entered again before it has been left.
TEST(MessageQueue, CarriesEveryElementWholeAndInOrderBetweenTwoThreads) {
    for (const std::size_t capacity : {2U, 256U, 2000U}) {
        constexpr std::uint64_t count = 100000;
        message_queue<std::vector<std::uint64_t>> queue(capacity);
        std::uint64_t sent = 0, taken = 0, wrong = 0;
        const auto take = [&](std::uint64_t end) {
            for (std::vector<std::uint64_t> element; taken < end; ++taken) {
                while (!queue.dequeue(element)) std::this_thread::yield();
                wrong += element.size() != 2 || element[0] != taken || element[1] != ~taken;
            }
        };
        while (queue.enqueue({sent, ~sent})) ++sent;
        take(capacity / 8);
        while (queue.enqueue({sent, ~sent})) ++sent;
        EXPECT_GE(sent - taken, capacity) << "also with a block half read";
        std::thread producer([&] {
            for (; sent < count; ++sent)
                while (!queue.enqueue({sent, ~sent})) std::this_thread::yield();
        });
        take(count);
        producer.join();
        EXPECT_EQ(wrong, 0U) << capacity;
        EXPECT_EQ(queue.peek(), nullptr);
    }
}

#if !defined(_WIN32)
message_queue<std::uint64_t> interrupted(2000);
volatile std::uint64_t sent = 0;

// A producer in a signal handler comes between any two instructions of the consumer, also between
// its two looks into a block, and each time it moves on to the next block.
TEST(MessageQueue, PassesOverNothingWhereverTheProducerComesBetween) {
    const Interruptions often([](int) {
        for (int i = 0; i < 600 && interrupted.enqueue(sent); ++i) sent = sent + 1;
    });
    std::uint64_t taken = 0, wrong = 0;
    for (std::uint64_t element; taken < 1000000;)
        if (interrupted.dequeue(element)) wrong += element != taken++;
    EXPECT_EQ(wrong, 0U);
}
#endif

}  // namespace
}  // namespace kv7::ply
