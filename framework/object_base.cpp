#include "framework/object_base.h"

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
    state_dictionary = owns_state_dictionary ? dictionary_new() : saved;
}

object_base::~object_base() {
    if (owns_state_dictionary) object_free(state_dictionary);
}

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> split_list(const std::string& commas) {
    std::vector<std::string> items;
    if (trimmed(commas).empty()) return items;
    std::size_t begin = 0;
    for (std::size_t comma; (comma = commas.find(',', begin)) != std::string::npos;
         begin = comma + 1)
        items.push_back(trimmed(commas.substr(begin, comma - begin)));
    items.push_back(trimmed(commas.substr(begin)));
    return items;
}

}  // namespace kv7::ply
