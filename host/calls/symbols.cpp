// The table of interned names; its first user makes it, on any thread.
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "host/calls.h"

namespace {

struct symbol_table {
    std::mutex mutex;
    std::unordered_map<std::string, std::unique_ptr<tesk_symbol>> symbols;
};

symbol_table& table() {
    static symbol_table& only = *new symbol_table;  // names outlive every static of an object
    return only;
}

}  // namespace

extern "C" {

tesk_symbol* gensym(const char* text) {
    symbol_table& all = table();
    const std::lock_guard lock(all.mutex);
    auto& entry = *all.symbols.try_emplace(text != nullptr ? text : "").first;
    if (!entry.second)
        entry.second = std::make_unique<tesk_symbol>(tesk_symbol{entry.first.c_str(), nullptr});
    return entry.second.get();
}

tesk_symbol* gensym_tr(const char* text) {
    return gensym(text);
}  // one language

}  // extern "C"
