// Finds entries by name through a hash and walks them in the order in which they were entered.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kv7::ply {

// The fixed order makes registration, the reference page and a device's own walks the same on
// every system. An entry under a name that is there already replaces the old one.
template <class T>
class ordered_map {
public:
    using entry = std::pair<std::string, T*>;

    void enter(const std::string& name, T* value) {
        if (const auto known = indices_.find(name); known != indices_.end()) {
            entries_[known->second].second = value;
            return;
        }
        entries_.emplace_back(name, value);
        try {
            indices_.emplace(name, entries_.size() - 1);
        } catch (...) {
            entries_.pop_back();  // both or neither
            throw;
        }
    }
    T* find(const std::string& name) const {  // null when there is none; any thread
        const auto found = indices_.find(name);
        return found == indices_.end() ? nullptr : entries_[found->second].second;
    }
    auto begin() const noexcept { return entries_.begin(); }
    auto end() const noexcept { return entries_.end(); }
    std::size_t size() const noexcept { return entries_.size(); }

private:
    std::vector<entry> entries_;
    std::unordered_map<std::string, std::size_t> indices_;
};

}  // namespace kv7::ply
