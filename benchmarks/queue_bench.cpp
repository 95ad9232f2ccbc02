// The queue between two threads, and a change's whole way through it.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench.h"
#include "framework/message_queue.h"

namespace kv7::orv {
namespace {

void enqueue_and_dequeue(benchmark::State& state) {
    ply::message_queue<std::uint64_t> queue(256);
    std::uint64_t element = 0;
    for (auto _ : state) {
        queue.enqueue(element);
        queue.dequeue(element);
        benchmark::DoNotOptimize(element);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(enqueue_and_dequeue);

void look_into_an_empty_queue(benchmark::State& state) {
    ply::message_queue<std::uint64_t> queue(256);
    for (auto _ : state) benchmark::DoNotOptimize(queue.peek());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(look_into_an_empty_queue);

// Posted on one side, applied to the engine on the other: 511 toggles a round.
void a_full_queue_of_changes(benchmark::State& state) {
    Bench bench({}, 1);
    const std::size_t clip = attribute_index("clip");
    for (auto _ : state) {
        for (int i = 0; i < 511; ++i) {
            const double value = i % 2;
            bench.driver.set(clip, {&value, 1});
        }
        bench.vector();
    }
    state.SetItemsProcessed(state.iterations() * 511);
}
BENCHMARK(a_full_queue_of_changes);

}  // namespace
}  // namespace kv7::orv
