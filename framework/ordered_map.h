// Finds entries by name through a hash and walks them in the order in which they were entered.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kv7::ply {

// The fixed order makes registration, the reference page and a device's own walks the same on
// every system. An entry under a name that is there already takes the old one's place.
template <class T>
class ordered_map {
public:
    using entry = std::pair<std::string, T*>;

    void enter(const std::string& name, T* value) {
        const auto [place, is_new] = places_.try_emplace(name, entries_.size());
        if (is_new)
            entries_.emplace_back(name, value);
        else
            entries_[place->second].second = value;
    }
    T* find(const std::string& name) const {  // null when there is none; any thread
        const auto place = places_.find(name);
        return place == places_.end() ? nullptr : entries_[place->second].second;
    }
    auto begin() const noexcept { return entries_.begin(); }
    auto end() const noexcept { return entries_.end(); }
    std::size_t size() const noexcept { return entries_.size(); }

private:
    std::vector<entry> entries_;
    std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace kv7::ply
