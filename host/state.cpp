#include "host/state.h"

#include <algorithm>

namespace {

void dsp_add64(void* chain, void* instance, tesk_perform perform, std::int64_t, void* user) {
    tesk::instance_record* const record =
        static_cast<tesk::instance_record::signal_chain*>(chain)->builds;
    if (record == nullptr || tesk::record_of(instance) != record) return;
    record->user.store(user);
    record->perform.store(perform);
}

}  // namespace

const tesk_class::method* tesk_class::find_method(const tesk_symbol* wanted) const {
    // A name added twice: the later one holds.
    const auto found = std::find_if(methods.rbegin(), methods.rend(),
                                    [=](const method& m) { return m.name == wanted; });
    return found == methods.rend() ? nullptr : &*found;
}

const tesk_class::attribute* tesk_class::find_attribute(const tesk_symbol* wanted) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [=](const auto& a) { return a->name == wanted; });
    return found == attributes.end() ? nullptr : found->get();
}

tesk::attribute_info* tesk_class::find_info(const std::string& wanted) {
    const auto found = std::find_if(info.attributes.begin(), info.attributes.end(),
                                    [&](const auto& a) { return a.name == wanted; });
    return found == info.attributes.end() ? nullptr : &*found;
}

namespace tesk {

host_state::host_state() {
    attribute_class.name = gensym("attribute");
    chain_class.name = gensym("signalchain");
    chain_class.methods.push_back(
        {gensym("dsp_add64"), reinterpret_cast<tesk_method>(dsp_add64), 9});
    dictionary_class.name = gensym("dictionary");
    outlet_class.name = gensym("outlet");
    preset_class.name = gensym("preset");
    self_class.name = gensym("tesk");
    gensym("tesk")->object = &self;
}

void host_state::error(const std::string& line) {
    const std::lock_guard lock(error_mutex);
    errors.push_back(line);
}

host_state& state() {
    static host_state& only = *new host_state;
    return only;
}

}  // namespace tesk
