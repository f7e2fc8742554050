// Loops that are nothing but table look-ups. They are compiled without the vectoriser, which would move each
// index into a vector and out again, at twice the time. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra {

// A table of words, ready for each of four neighbouring places: entry [k][i] is entry i at the place of word
// k of a machine word. So four results are put together by "or" and written at once.
class WordTable {
  public:
    WordTable() = default;
    explicit WordTable(const std::array<std::uint16_t, 256>& entries);

    // Out[i] is the entry for index[i], which is below 256.
    void lookUp(const std::uint8_t* index, std::uint16_t* out, std::size_t count) const;
    void lookUp(const std::uint16_t* index, std::uint16_t* out, std::size_t count) const;

  private:
    template <class Index>
    void lookUpAll(const Index* index, std::uint16_t* out, std::size_t count) const;

    std::array<std::array<std::uint64_t, 256>, 4> lanes_{};
};

// Out[i] = table[index[i]], for a table that also reaches below 0.
void lookUp(const std::int16_t* table, const std::int16_t* index, std::int16_t* out, std::size_t count);

// The i-th four of `out` is first[p[0]] + second[p[1]] + third[p[2]], lowest 16 bits first, p being the i-th
// of `count` pixels that lie `pitch` bytes apart, 3 or 4.
void sumLookUps(const std::array<std::uint64_t, 256>& first, const std::array<std::uint64_t, 256>& second,
                const std::array<std::uint64_t, 256>& third, const std::uint8_t* pixels, std::size_t pitch,
                std::uint16_t* out, std::size_t count);

}  // namespace tavra
