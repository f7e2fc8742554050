// One axis of region composition: which columns (or rows) of the sensor a region covers, and where they come
// to lie once all others are taken out. A plain value of its owner's thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra {

class CoveredAxis {
  public:
    static constexpr std::size_t kMaxRegions = 32;

    void clear();

    // Adds what of [start, start + length) is not covered yet. At most kMaxRegions times between two clears.
    void add(std::uint64_t start, std::uint64_t length);

    // Places covered.
    std::uint64_t total() const { return total_; }

    // The place once all uncovered ones before it are gone. A place that is not covered stays as it is.
    std::uint64_t compressed(std::uint64_t place) const;

  private:
    struct Interval {
        std::uint64_t start = 0;
        std::uint64_t length = 0;

        std::uint64_t end() const { return start + length; }
    };

    void insert(std::size_t at, std::uint64_t start, std::uint64_t end);

    // Ascending and apart; two that touch stay two. They begin and end where some region begins or ends, so
    // they are fewer than those places.
    std::array<Interval, 2 * kMaxRegions> intervals_;
    std::size_t count_ = 0;
    std::uint64_t total_ = 0;
};

}  // namespace tavra
