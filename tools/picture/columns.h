// A row of columns of equal length for a sound of unknown length: when all are used, neighbours are
// merged and each spans twice as much. So memory does not grow with time, and at least half of the
// columns stay in use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace program {

// Column: has merge(const Column&, double share), which takes in a later one; share: of what the
// result spans.
template <class Column>
class columns {
public:
    // max: even. span: frames of a column at first.
    columns(std::size_t max, std::int64_t span) : max_(max), span_(span) { columns_.reserve(max); }

    // next stands for so many frames, the span or the span divided by a power of two.
    void add(const Column& next, std::int64_t frames) {
        if (filled_ == span_ && columns_.size() == max_) merge_neighbours();
        if (columns_.empty() || filled_ == span_) {
            columns_.push_back(next);
            filled_ = frames;
        } else {
            filled_ += frames;
            columns_.back().merge(next, static_cast<double>(frames) / static_cast<double>(filled_));
        }
    }

    std::int64_t span() const { return span_; }  // frames of a column
    bool last_is_full() const { return filled_ == span_; }
    const std::vector<Column>& all() const { return columns_; }

private:
    void merge_neighbours() {
        for (std::size_t i = 0; i < columns_.size() / 2; ++i) {
            Column both = std::move(columns_[2 * i]);
            both.merge(columns_[2 * i + 1], 0.5);
            columns_[i] = std::move(both);
        }
        columns_.resize(columns_.size() / 2);
        span_ *= 2;
        filled_ = span_;
    }

    std::size_t max_;
    std::int64_t span_;
    std::int64_t filled_ = 0;  // frames in the last column
    std::vector<Column> columns_;
};

}  // namespace program
