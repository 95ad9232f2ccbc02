// The signal set-up of an instance, and its vectors; one state keeps the two apart.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#include "host/method_call.h"
#include "host/state.h"
#include "host/system.h"

namespace tesk {

bool instance::prepare(double rate, int vector_size) {
    return prepare(rate, vector_size,
                   std::vector<std::int16_t>(static_cast<std::size_t>(inlets() + outlets()), 1));
}

bool instance::prepare(double rate, int vector_size, const std::vector<std::int16_t>& connected) {
    using dsp64 = void(void*, void*, const std::int16_t*, double, std::int64_t, std::int64_t);
    const tesk_class::method* const method = record_->of_class->find_method(gensym("dsp64"));
    const call_into call(*record_);
    if (call.refused() || method == nullptr || record_->signals_ended.load()) return false;
    const bool guarded = state().guarded.load();
    if (guarded) {
        // The vector under way is awaited, and none begins until the state is idle again.
        for (int idle = instance_record::idle;
             !record_->state.compare_exchange_weak(idle, instance_record::stopped);
             idle = instance_record::idle)
            std::this_thread::yield();
        record_->perform.store(nullptr);
    }
    call_as<dsp64>(method->function, record_->object, static_cast<void*>(&record_->chain),
                   connected.data(), rate, static_cast<std::int64_t>(vector_size), std::int64_t{0});
    // What "dsp64" changed is complete before a vector may begin.
    if (guarded) record_->state.store(instance_record::idle);
    return record_->perform.load() != nullptr;
}

bool instance::run(const double* const* in, double* const* out, int frames) noexcept {
    int idle = instance_record::idle;
    if (record_->state.compare_exchange_strong(idle, instance_record::performing)) {
        const tesk_perform perform = record_->perform.load();
        if (perform != nullptr) {
            system::enter_realtime();
            perform(record_->object, &record_->chain, const_cast<double**>(in), record_->inlets,
                    const_cast<double**>(out), outlets(), frames, 0, record_->user.load());
            system::leave_realtime();
        }
        record_->state.store(instance_record::idle);
        if (perform != nullptr) return true;
    }
    for (int i = 0; i < output_count_; ++i) std::fill_n(out[i], frames, 0.0);
    return false;
}

int instance::inlets() const {
    return static_cast<int>(record_->inlets);
}
int instance::outlets() const {
    return output_count_;
}

}  // namespace tesk
