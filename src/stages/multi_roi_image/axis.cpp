#include "stages/multi_roi_image/axis.h"

#include <algorithm>

namespace tavra {

void CoveredAxis::clear() {
    count_ = 0;
    total_ = 0;
}

void CoveredAxis::add(std::uint64_t start, std::uint64_t length) {
    const std::uint64_t end = start + length;
    for (std::size_t i = 0; i < count_ && start < end; ++i) {
        const Interval covered = intervals_[i];
        if (start < covered.start) insert(i++, start, std::min(end, covered.start));
        start = std::max(start, covered.end());  // what is left begins behind it
    }
    if (start < end) insert(count_, start, end);
}

void CoveredAxis::insert(std::size_t at, std::uint64_t start, std::uint64_t end) {
    std::move_backward(intervals_.begin() + at, intervals_.begin() + count_, intervals_.begin() + count_ + 1);
    intervals_[at] = {start, end - start};
    ++count_;
    total_ += end - start;
}

std::uint64_t CoveredAxis::compressed(std::uint64_t place) const {
    std::uint64_t before = 0;
    for (std::size_t i = 0; i < count_; ++i) {
        const Interval& covered = intervals_[i];
        if (place >= covered.start && place < covered.end()) return place - covered.start + before;
        before += covered.length;
    }
    return place;
}

}  // namespace tavra
