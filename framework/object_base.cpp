#include "framework/object_base.h"

#include <utility>

#include "framework/host_answer.h"
#include "framework/symbol_table.h"

namespace kv7::ply {

namespace {

thread_local void* next_host_object = nullptr;

}  // namespace

enclosing_instance::enclosing_instance(void* host_object) noexcept {
    next_host_object = host_object;
}

enclosing_instance::~enclosing_instance() {
    next_host_object = nullptr;
}

object_base::object_base()
    : host_object(std::exchange(next_host_object, nullptr)),
      object_tag(host_object != nullptr ? valid_tag : 0) {
    static const symbol dictionary{"dictionary"};
    void* const saved = symbols::saved_dictionary.object();
    owns_state_dictionary =
        saved == nullptr || object_classname_compare(saved, dictionary.interned()) == 0;
    state_dictionary = owns_state_dictionary
                           ? require_pointer(dictionary_new(), "dictionary_new", "saved state")
                           : saved;
}

object_base::~object_base() {
    if (owns_state_dictionary) object_free(state_dictionary);
}

}  // namespace kv7::ply
