// One box: how it ends, and what can be asked of it.
#include <string>
#include <thread>
#include <vector>

#include "host/method_call.h"
#include "host/state.h"

namespace tesk {

instance::instance(instance_record* record) noexcept
    : record_(record), output_count_(static_cast<int>(record->outlets.size())) {}

instance::instance(instance_record* record, borrowed) noexcept : instance(record) {
    borrowed_ = true;
}

instance::~instance() {
    if (borrowed_) return;
    free();
    delete record_;
}

void instance::free() {
    if (record_->ending.exchange(true)) return;
    while (record_->calls.load() != 0) std::this_thread::yield();
    if (record_->of_class->free != nullptr) record_->of_class->free(record_->object);
    z_dsp_free(record_->object);
    std::erase(state().instances, record_);
    give_back(*record_);
}

void instance::refuse(const std::string& why) const {
    state().error(class_name() + ": " + why);
}

std::string instance::assist(bool outlet, int index, const std::string& before) {
    using assist = void(void*, void*, std::int64_t, std::int64_t, char*);
    char text[257] = {};
    before.copy(text, sizeof text - 1);
    const tesk_class::method* const method = record_->of_class->find_method(gensym("assist"));
    const call_into call(*record_);
    if (method != nullptr && !call.refused())
        call_as<assist>(method->function, record_->object, static_cast<void*>(record_->object),
                        std::int64_t{outlet ? 2 : 1}, std::int64_t{index},
                        static_cast<char*>(text));
    return text;
}

const std::string& instance::class_name() const {
    return record_->of_class->info.name;
}
const class_info& instance::described() const {
    return record_->of_class->info;
}

std::vector<std::string> instance::notifications() const {
    const std::lock_guard lock(record_->notification_mutex);
    return record_->notifications;
}

tesk_method instance::method(const std::string& name) const {
    const tesk_class::method* const found = record_->of_class->find_method(gensym(name.c_str()));
    return found != nullptr ? found->function : nullptr;
}

void* instance::object() const {
    return record_->object;
}

}  // namespace tesk
