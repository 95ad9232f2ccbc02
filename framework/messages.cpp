#include "framework/messages.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "framework/guarded.h"

namespace kv7::ply {

namespace {

// Called by the host or by the framework with an argument list of their own. "mousedrag" is not
// among them: it keeps the kind it was made with.
constexpr std::string_view private_names[]{
    "dblclick",    "dsp64",           "dspsetup",         "edclose",
    "fileusage",   "vrxclass_setup",  "teskclass_setup",  "teskob_setup",
    "mop_setup",   "notify",          "okclose",          "oksize",
    "paint",       "patchlineupdate", "savestate",        "setup",
    "mouseenter",  "mouseleave",      "mousedown",        "mouseup",
    "mousemove",   "mousedragdelta",  "mousedoubleclick", "mousewheel",
    "focusgained", "focuslost",       "loadbang"};

// These come from a finger instead of the mouse when the class asks for "multitouch".
constexpr std::string_view touch_names[]{"mouseenter", "mousemove", "mousedown",
                                         "mousedrag",  "mouseup",   "mouseleave"};

template <std::size_t N>
bool contains(const std::string_view (&names)[N], std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

message_base::message_base(object_base* owner_, const std::string& name_,
                           message_function function_, std::string description_, std::int32_t kind_)
    : owner(*owner_),
      function(std::move(function_)),
      kind(kind_),
      description(std::move(description_)) {
    std::string final_name = name_;
    if (name_ == "integer") {
        final_name = "int";
        kind = type_long;
    } else if (name_ == "number") {
        final_name = "float";
        kind = type_float;
    } else if (contains(private_names, name_)) {
        kind = type_private;
    }
    const std::vector<std::string> options = owner.class_options();
    if (std::find(options.begin(), options.end(), "multitouch") != options.end() &&
        contains(touch_names, final_name))
        final_name = "mt_" + final_name;
    name = final_name;
    owner.messages.enter(final_name, this);
}

atoms message_base::call_one(const atom& value, int inlet) {
    return call(atoms{value}, inlet);
}

int message_base::resolved(int inlet) const {
    void* const host_object = owner.valid_host_object();
    if (inlet != -1 || host_object == nullptr) return inlet;
    return owner.inlets.size() < 2 ? 0 : static_cast<int>(proxy_getinlet(host_object));
}

message<2>::message(object_base* owner_, const std::string& name_, message_function function_,
                    std::string description_, std::int32_t kind_)
    : message_base(owner_, name_, std::move(function_), std::move(description_), kind_) {}

atoms message<2>::call(const atoms& values, int inlet) {
    return function(values, resolved(inlet));
}

message<0>::message(object_base* owner_, const std::string& name_, message_function function_,
                    std::string description_, std::int32_t kind_)
    : message_base(owner_, name_, std::move(function_), std::move(description_), kind_) {}

atoms message<0>::call(const atoms& values, int inlet) {
    const int found = resolved(inlet);
    if (owner.any_thread_class() || systhread_ismainthread() != 0) return function(values, found);
    if (enqueue(values, found))
        defer(owner.valid_host_object(), run_deferred, reinterpret_cast<tesk_symbol*>(this), 0,
              nullptr);
    return {};
}

bool message<0>::enqueue(const atoms& values, int inlet) {
    deferred_message deferred{this, values, inlet};
    // Acquires the queue from the producer before; nobody spins for it.
    if (producing_.test_and_set(std::memory_order_acquire)) return false;
    const bool taken = queue_.enqueue(std::move(deferred));
    producing_.clear(std::memory_order_release);  // publishes the queue to the next producer
    return taken;
}

// The host passes the message in the argument for a symbol.
void message<0>::run_deferred(void*, tesk_symbol* target, std::int16_t, tesk_atom*) {
    guarded([target] {
        auto& queue = reinterpret_cast<message<0>*>(target)->queue_;
        const deferred_message* const front = queue.peek();
        if (front == nullptr) return;
        message<0>* const called = front->target;
        deferred_message taken;
        queue.dequeue(taken);
        called->function(taken.values, taken.inlet);
    });
}

}  // namespace kv7::ply
