// Colour interpolation one pixel at a time, straight from the rules and with no thought of speed: what the
// stage's output is compared with. It shares nothing with the stage.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace tavra::test {

// A mosaic as numbers, with samples asked for outside of it answered by the replacement rules.
class PlainMosaic {
  public:
    PlainMosaic(long width, long height, int colorArray, std::vector<unsigned> samples)
        : width_(width), height_(height), colorArray_(colorArray), samples_(std::move(samples)) {}

    long width() const { return width_; }
    long height() const { return height_; }

    char color(long x, long y) const {
        static const char* const kCells[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
        return kCells[colorArray_ - 2][2 * (y & 1) + (x & 1)];
    }

    unsigned at(long x, long y) const {
        return samples_[static_cast<std::size_t>(replaced(y, height_) * width_ + replaced(x, width_))];
    }

  private:
    // The nearest of the same colour inside; in frames too small to have one, the first.
    static long replaced(long index, long count) {
        if (index == -1) index = 1;
        if (index == count) index = count - 2;
        if (index == count + 1) index = count - 1;
        return index < 0 || index >= count ? 0 : index;
    }

    long width_, height_;
    int colorArray_;
    std::vector<unsigned> samples_;
};

struct Bgr {
    unsigned b = 0, g = 0, r = 0;
    unsigned& operator[](char color) { return color == 'B' ? b : color == 'G' ? g : r; }
};

inline Bgr plainRawColor(const PlainMosaic& m, long x, long y) {
    Bgr pixel;
    pixel[m.color(x, y)] = m.at(x, y);
    return pixel;
}

inline Bgr plainNearest(const PlainMosaic& m, long x, long y) {
    const long cellX = x / 2 * 2, cellY = y / 2 * 2;
    Bgr pixel;
    for (long cy = cellY; cy < cellY + 2; ++cy) {
        for (long cx = cellX; cx < cellX + 2; ++cx) {
            const char color = m.color(cx, cy);
            if (color != 'G' || cy == y) pixel[color] = m.at(cx, cy);
        }
    }
    return pixel;
}

inline unsigned plainMean(unsigned a, unsigned b) {
    return (a + b) / 2;
}

// The colour that row y does not hold.
inline char lackingColor(const PlainMosaic& m, long y) {
    const char own = m.color(0, y) == 'G' ? m.color(1, y) : m.color(0, y);
    return own == 'R' ? 'B' : 'R';
}

// Method 3: one of the two colours of row y, at column x.
inline unsigned bilinearAcross(const PlainMosaic& m, char color, long x, long y) {
    if (m.color(x, y) == color) return m.at(x, y);
    if (x == 0) return m.at(1, y);
    if (x == m.width() - 1) return m.at(m.width() - 2, y);
    return plainMean(m.at(x - 1, y), m.at(x + 1, y));
}

inline Bgr plainBilinear(const PlainMosaic& m, long x, long y) {
    Bgr pixel;
    const char lacking = lackingColor(m, y);
    for (char color : {'B', 'G', 'R'}) {
        if (color != lacking) pixel[color] = bilinearAcross(m, color, x, y);
    }
    if (y == 0) {
        pixel[lacking] = bilinearAcross(m, lacking, x, 1);
    } else if (y == m.height() - 1) {
        pixel[lacking] = bilinearAcross(m, lacking, x, m.height() - 2);
    } else {
        pixel[lacking] =
            plainMean(bilinearAcross(m, lacking, x, y - 1), bilinearAcross(m, lacking, x, y + 1));
    }
    return pixel;
}

// Method 4: sums of two samples weighted by -1/8 and 5/8, each rounded, in 16 bits.
inline unsigned plainTap(unsigned a, unsigned b, unsigned c, unsigned d) {
    const int outer = -static_cast<int>(std::lround((a + d) / 8.0));
    const int inner = static_cast<int>(std::floor((b + c) * 5 / 8.0 + 0.5));
    const auto sum = static_cast<std::uint16_t>(outer + inner);
    if (sum <= 255) return sum;
    return (sum & 0x8000) != 0 ? 0 : 255;
}

inline unsigned fourTapAcross(const PlainMosaic& m, char color, long x, long y) {
    const long w = m.width();
    if (m.color(x, y) == color) return m.at(x, y);
    if (x == 0) return m.at(1, y);
    if (x == w - 1) return m.at(w - 2, y);
    if (x >= 3 && x <= w - 4) return plainTap(m.at(x - 3, y), m.at(x - 1, y), m.at(x + 1, y), m.at(x + 3, y));
    return plainMean(m.at(x - 1, y), m.at(x + 1, y));
}

inline Bgr plainFourTap(const PlainMosaic& m, long x, long y) {
    const long h = m.height();
    Bgr pixel;
    const char lacking = lackingColor(m, y);
    for (char color : {'B', 'G', 'R'}) {
        if (color != lacking) pixel[color] = fourTapAcross(m, color, x, y);
    }
    const auto filled = [&](long row) { return fourTapAcross(m, lacking, x, row); };
    if (y == 0) {
        pixel[lacking] = filled(1);
    } else if (y == h - 1) {
        pixel[lacking] = filled(h - 2);
    } else if (y >= 3 && y <= h - 4) {
        pixel[lacking] = plainTap(filled(y - 3), filled(y - 1), filled(y + 1), filled(y + 3));
    } else {
        pixel[lacking] = plainMean(filled(y - 1), filled(y + 1));
    }
    return pixel;
}

// Methods 5 and 6. With an odd height, method 5 reads the last three rows from two rows that alternate for
// ever.
class PlainCell {
  public:
    PlainCell(const PlainMosaic& m, long x, long y, bool alternateLastRows)
        : m_(m), x_(x), y_(y), alternate_(alternateLastRows && m.height() % 2 == 1 && y >= m.height() - 3) {}

    unsigned at(long x, long y) const {
        if (!alternate_) return m_.at(x, y);
        const long first = m_.height() - 3;
        const bool second = ((y - first) & 1) != 0;
        const long row = second ? first + 1 : first;
        return m_.at(x, row < 0 ? 0 : row);
    }

    unsigned green() const {
        if (m_.width() % 2 == 0 && x_ == m_.width() - 1 && m_.color(x_, y_) == 'G') return at(x_, y_);
        unsigned sum = 0;
        for (long dy : {0, 1}) {
            for (long dx : {0, 1}) {
                if (m_.color(x_ + dx, y_ + dy) == 'G') sum += at(x_ + dx, y_ + dy);
            }
        }
        return sum >> 1;
    }

    // The cell's site of the colour, or the 9:3:3:1 mean of the four sites around the middle of the cell.
    unsigned nearest(char color) const { return weighted(color, false); }
    unsigned bilinear(char color) const { return weighted(color, true); }

  private:
    unsigned weighted(char color, bool four) const {
        for (long dy : {0, 1}) {
            for (long dx : {0, 1}) {
                if (m_.color(x_ + dx, y_ + dy) != color) continue;
                const long nearX = x_ + dx, nearY = y_ + dy;
                if (!four) return at(nearX, nearY);
                // The middle is half a sample from the near site, so the other site is one and a half beyond
                // it.
                const long farX = dx == 0 ? x_ + 2 : x_ - 1;
                const long farY = dy == 0 ? y_ + 2 : y_ - 1;
                return (9 * at(nearX, nearY) + 3 * at(farX, nearY) + 3 * at(nearX, farY) + at(farX, farY)) >>
                       4;
            }
        }
        return ~0u;
    }

    const PlainMosaic& m_;
    long x_, y_;
    bool alternate_;
};

inline Bgr plainCellBilinear(const PlainMosaic& m, long x, long y) {
    const PlainCell cell(m, x, y, true);
    return {cell.bilinear('B'), cell.green(), cell.bilinear('R')};
}

inline Bgr plainCellNearest(const PlainMosaic& m, long x, long y) {
    const PlainCell cell(m, x, y, false);
    return {cell.nearest('B'), cell.green(), cell.nearest('R')};
}

inline Bgr plainPixel(int method, const PlainMosaic& m, long x, long y) {
    switch (method) {
        case 1: return plainRawColor(m, x, y);
        case 2: return plainNearest(m, x, y);
        case 3: return plainBilinear(m, x, y);
        case 4: return plainFourTap(m, x, y);
        case 5: return plainCellBilinear(m, x, y);
        default: return plainCellNearest(m, x, y);
    }
}

// The quad reduction: each group of 4 x 4 becomes A B A B / C D C D / A B A B / C D C D of its blocks' means.
// Blocks at the edge of an odd size have the mean of the samples that exist; one that does not exist is that
// of the group before.
inline std::vector<unsigned> plainReduceQuad(long width, long height, const std::vector<unsigned>& samples) {
    const auto blockMean = [&](long x, long y) {
        unsigned sum = 0, count = 0;
        for (long sy = y; sy < y + 2 && sy < height; ++sy) {
            for (long sx = x; sx < x + 2 && sx < width; ++sx) {
                sum += samples[static_cast<std::size_t>(sy * width + sx)];
                ++count;
            }
        }
        return sum / count;
    };
    const auto blockStart = [](long index, long count) {
        long start = index / 4 * 4 + (index % 2) * 2;
        if (start >= count) start -= 4;
        return start < 0 ? 0 : start;
    };
    std::vector<unsigned> reduced(samples.size());
    for (long y = 0; y < height; ++y) {
        for (long x = 0; x < width; ++x) {
            reduced[static_cast<std::size_t>(y * width + x)] =
                blockMean(blockStart(x, width), blockStart(y, height));
        }
    }
    return reduced;
}

}  // namespace tavra::test
