#include "engine/read_head.h"

namespace orvane::blocks::vesk {

ReadHead::ReadHead(std::uint64_t size) : rate_left(size), rate_right(size), capacity(size) {}

void ReadHead::push(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    filled = min(filled + 1, capacity);
    rate_left.push(entry_left);
    rate_right.push(entry_right);
}

void ReadHead::seed(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    filled = 0;
    cursor_left = {1, entry_left};
    cursor_right = {1, entry_right};
    push(entry_left, entry_right);
    push(entry_left, entry_right);
}

}  // namespace orvane::blocks::vesk
