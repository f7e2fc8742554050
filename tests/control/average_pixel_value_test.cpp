#include "control/average_pixel_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra::test {
namespace {

using testing::Each;
using testing::ElementsAre;

using Boundaries = CAveragePixelValue::Boundaries;
using Means = CAveragePixelValue::Means;
using Weights = CAveragePixelValue::Weights;
using Frame = std::vector<std::uint8_t>;

constexpr Weights kEqual{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
constexpr Weights kNone{};

Weights onlyCell(std::size_t cell) {
    Weights weights{};
    weights[cell] = 1;
    return weights;
}

Means meansOf(const CAveragePixelValue& statistics, const Weights& weights, Means before = {}) {
    EXPECT_EQ(statistics.GetWeightedAverage(weights, before), 1u);
    return before;
}

std::uint8_t luminanceOf(const CAveragePixelValue& statistics, const Weights& weights) {
    std::uint8_t luminance = 77;
    EXPECT_EQ(statistics.GetWeightedLuminance(weights, luminance), 1u);
    return luminance;
}

void measure(CAveragePixelValue& statistics, std::uint32_t width, std::uint32_t height, std::uint16_t code,
             const Frame& frame) {
    ASSERT_EQ(frame.size(), std::size_t{width} * height);
    ASSERT_EQ(statistics.Accumulate(width, height, code, frame.data()), 1u);
}

// A frame with one value at each position of the pattern.
Frame mosaicFrame(std::uint32_t width, std::uint32_t height, const std::array<std::uint8_t, 4>& values) {
    Frame frame;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) frame.push_back(values[(x % 2) + 2 * (y % 2)]);
    }
    return frame;
}

// The rules pixel by pixel, with all that is carried from one frame to the next.
class PlainStatistics {
  public:
    std::array<std::uint32_t, 3> xLines{2500, 5000, 7500};
    std::array<std::uint32_t, 3> yLines{2500, 5000, 7500};
    bool dirty = true;
    std::uint8_t mean[4][4][4] = {};  // row band, column band, position

    void measure(std::uint32_t width, std::uint32_t height, std::uint32_t code, const Frame& frame) {
        if (dirty || width != width_ || height != height_ || code != code_) {
            rebuild(width, height, code);
        }
        for (int row = 0; row < 4; ++row) {
            std::uint32_t sums[4][4] = {};
            for (std::uint32_t y = begin(yEdges_, row); y < yEdges_[row]; ++y) {
                for (int column = 0; column < 4; ++column) {
                    const std::uint32_t left = begin(xEdges_, column);
                    for (std::uint32_t x = left; x < xEdges_[column]; ++x) {
                        sums[column][position(x, y, left, code)] += frame[std::size_t{y} * width + x];
                    }
                }
            }
            for (int column = 0; column < 4; ++column) {
                for (int p = 0; p < (code == 1 ? 1 : 4); ++p) {
                    const std::uint32_t count = count_[row][column][p];
                    mean[row][column][p] =
                        static_cast<std::uint8_t>(count == 0 ? 0 : sums[column][p] / count % 256);
                }
            }
        }
    }

  private:
    static std::uint32_t begin(const std::uint32_t (&edges)[4], int band) {
        return band == 0 ? 0 : edges[band - 1];
    }

    static int position(std::uint32_t x, std::uint32_t y, std::uint32_t left, std::uint32_t code) {
        if (code >= 16 && code <= 19) {
            const bool second = (x / 2) % 2 == 1;
            const std::uint32_t side = second ? (left / 2 + 1) % 2 : (left / 2) % 2;
            return static_cast<int>(side + (y % 4 < 2 ? 0 : 2));
        }
        if (code == 1) return 0;
        return static_cast<int>(x % 2 + 2 * (y % 2));
    }

    static void cut(const std::array<std::uint32_t, 3>& lines, std::uint32_t size,
                    std::uint32_t (&edges)[4]) {
        for (int i = 0; i < 3; ++i) {
            edges[i] = lines[static_cast<std::size_t>(i)] * size / 10000;
            if (edges[i] > size) edges[i] = size;
            if (i > 0 && edges[i] < edges[i - 1]) edges[i] = edges[i - 1];
        }
        edges[3] = size;
    }

    void rebuild(std::uint32_t width, std::uint32_t height, std::uint32_t code) {
        cut(xLines, width, xEdges_);
        cut(yLines, height, yEdges_);
        for (int row = 0; row < 4; ++row) {
            const std::uint32_t top = begin(yEdges_, row);
            if (yEdges_[row] <= top) break;
            for (int column = 0; column < 4; ++column) {
                const std::uint32_t left = begin(xEdges_, column);
                if (xEdges_[column] <= left) break;
                countCell(left, top, xEdges_[column] - left, yEdges_[row] - top, code, count_[row][column]);
            }
        }
        width_ = width;
        height_ = height;
        code_ = code;
        dirty = false;
    }

    void countCell(std::uint32_t x0, std::uint32_t y0, std::uint32_t w, std::uint32_t h, std::uint32_t code,
                   std::uint32_t (&counts)[4]) const {
        if (code_ >= 16 && code_ <= 19) {
            countQuad(x0, y0, w, h, counts);
        } else if (code == 1) {
            counts[0] = w * h;
        } else {
            counts[0] = counts[1] = counts[2] = counts[3] = 0;
            for (std::uint32_t y = y0; y < y0 + h; ++y) {
                for (std::uint32_t x = x0; x < x0 + w; ++x) ++counts[x % 2 + 2 * (y % 2)];
            }
        }
    }

    static void countQuad(std::uint32_t x0, std::uint32_t y0, std::uint32_t w, std::uint32_t h,
                          std::uint32_t (&counts)[4]) {
        // What is added to n / 2 by the residue of the height: first, second; with the flag 0 and 1.
        constexpr int kFirst[4][2] = {{0, 0}, {1, 1}, {0, 0}, {1, 0}};
        constexpr int kSecond[4][2] = {{0, 0}, {0, 0}, {-1, 0}, {0, 1}};
        const std::uint32_t r = h % 4;
        const auto share = [](std::uint32_t n, int change) {
            return n / 2 + static_cast<std::uint32_t>(change);
        };
        const std::uint32_t xf = share(w, kFirst[r][w % 2]);
        const std::uint32_t xs = share(w, kSecond[r][w % 2]);
        const std::uint32_t yf = share(h, kFirst[r][y0 % 2]);
        const std::uint32_t ys = share(h, kSecond[r][y0 % 2]);
        constexpr int kPlaces[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}};
        const std::uint32_t s = x0 / 2 % 2 + (y0 & 2);
        counts[kPlaces[s][0]] = xf * yf;
        counts[kPlaces[s][1]] = xs * yf;
        counts[kPlaces[s][2]] = xf * ys;
        counts[kPlaces[s][3]] = xs * ys;
    }

    std::uint32_t width_ = 0, height_ = 0, code_ = 0;
    std::uint32_t xEdges_[4] = {}, yEdges_[4] = {};
    std::uint32_t count_[4][4][4] = {};
};

// Positions as the means of the codes 2 and 16 give them; for the others the same four in another order.
Means inOrderOf(std::uint16_t code, const std::uint8_t (&p)[4]) {
    switch (code) {
        case 3:
        case 17: return {p[1], p[0], p[3], p[2]};
        case 4:
        case 18: return {p[2], p[3], p[0], p[1]};
        case 5:
        case 19: return {p[3], p[2], p[1], p[0]};
        default: return {p[0], p[1], p[2], p[3]};
    }
}

void expectLikePlain(const CAveragePixelValue& statistics, const PlainStatistics& plain, std::uint16_t code) {
    for (std::size_t cell = 0; cell < 16; ++cell) {
        const std::uint8_t(&positions)[4] = plain.mean[cell / 4][cell % 4];
        Means wanted = inOrderOf(code, positions);
        if (code == 1 || (code >= 12 && code <= 15)) wanted = {positions[0], 9, 9, 9};
        EXPECT_EQ(meansOf(statistics, onlyCell(cell), {9, 9, 9, 9}), wanted) << "cell " << cell;
    }
}

// Sequences of frames on one object, as sizes, codes and the grid change under it.
TEST(AveragePixelValue, MeasuresLikeThePlainRules) {
    constexpr std::uint16_t kCodes[] = {1, 2, 3, 4, 5, 12, 13, 14, 15, 16, 17, 18, 19};
    std::mt19937 random(41);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    for (int sequence = 0; sequence < 60; ++sequence) {
        CAveragePixelValue statistics;
        PlainStatistics plain;
        std::uint32_t width = 1, height = 1;
        std::uint16_t code = 2;
        for (int step = 0; step < 8; ++step) {
            if (step == 0 || below(2) == 0) width = below(90);
            if (step == 0 || below(2) == 0) height = below(60);
            if (step == 0 || below(2) == 0) code = kCodes[below(std::size(kCodes))];
            if (below(3) == 0) {
                for (std::uint32_t& line : plain.xLines) line = below(11000);
                for (std::uint32_t& line : plain.yLines) line = below(11000);
                plain.dirty = true;
                Boundaries x, y;
                std::copy(plain.xLines.begin(), plain.xLines.end(), x.begin());
                std::copy(plain.yLines.begin(), plain.yLines.end(), y.begin());
                statistics.setControlArea(x, y);
            }
            Frame frame(std::size_t{width} * height);
            for (std::uint8_t& pixel : frame) pixel = static_cast<std::uint8_t>(random());
            measure(statistics, width, height, code, frame);
            plain.measure(width, height, code, frame);
            SCOPED_TRACE(testing::Message() << "sequence " << sequence << " step " << step << ": " << width
                                            << " x " << height << " code " << code);
            expectLikePlain(statistics, plain, code);
            if (testing::Test::HasFailure()) return;
        }
    }
}

// Rows longer than the runs in which they are summed, with every sample at its highest.
TEST(AveragePixelValue, SumsLongWhiteRows) {
    for (const std::uint16_t code : {1, 2, 16}) {
        CAveragePixelValue statistics;
        PlainStatistics plain;
        const Frame frame(std::size_t{20011} * 4, 255);
        measure(statistics, 20011, 4, code, frame);
        plain.measure(20011, 4, code, frame);
        expectLikePlain(statistics, plain, code);
    }
}

// 20 million pixels of 255 are 5.1e9, less 2^32: 805032704, over 20 million: 40.
TEST(AveragePixelValue, SumsWrapIn32Bits) {
    CAveragePixelValue statistics;
    statistics.setControlArea({10000, 10000, 10000}, {10000, 10000, 10000});
    measure(statistics, 5000, 4000, 1, Frame(20000000, 255));
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 40);
}

// 7500 x 1000000 wraps to 3205032704: column 320503.
TEST(AveragePixelValue, LinesOfVeryWideImagesWrapIn32Bits) {
    CAveragePixelValue statistics;
    statistics.setControlArea({7500, 7500, 7500}, {10000, 10000, 10000});
    Frame frame(1000000, 10);
    frame[320502] = 255;  // the last of the first cell
    frame[320503] = 0;
    measure(statistics, 1000000, 1, 1, frame);
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 10) << "(320502 x 10 + 255) / 320503";
    std::fill(frame.begin(), frame.begin() + 320503, std::uint8_t{11});
    measure(statistics, 1000000, 1, 1, frame);
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 11);
    frame[320502] = 10;
    measure(statistics, 1000000, 1, 1, frame);
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 10) << "truncated";
}

TEST(AveragePixelValue, GivesRGrGbBByTheCode) {
    const Frame frame = mosaicFrame(16, 16, {10, 20, 30, 40});
    const struct {
        std::uint16_t code;
        Means wanted;
    } rows[] = {{2, {10, 20, 30, 40}}, {3, {20, 10, 40, 30}}, {4, {30, 40, 10, 20}}, {5, {40, 30, 20, 10}}};
    CAveragePixelValue statistics;
    for (const auto& row : rows) {
        measure(statistics, 16, 16, row.code, frame);
        EXPECT_EQ(meansOf(statistics, kEqual), row.wanted) << row.code;
    }
}

// Cells of 4 x 4, each colour a block of 2 x 2.
TEST(AveragePixelValue, GivesRGrGbBOfQuadMosaics) {
    Frame frame;
    for (unsigned y = 0; y < 16; ++y) {
        for (unsigned x = 0; x < 16; ++x) {
            frame.push_back(static_cast<std::uint8_t>(10 + 10 * (x / 2 % 2) + 20 * (y / 2 % 2)));
        }
    }
    const struct {
        std::uint16_t code;
        Means wanted;
    } rows[] = {
        {16, {10, 20, 30, 40}}, {17, {20, 10, 40, 30}}, {18, {30, 40, 10, 20}}, {19, {40, 30, 20, 10}}};
    CAveragePixelValue statistics;
    for (const auto& row : rows) {
        measure(statistics, 16, 16, row.code, frame);
        EXPECT_EQ(meansOf(statistics, kEqual), row.wanted) << row.code;
    }
}

// Cells of 6 x 6 from (0, 0): 16 samples fall into the first block's position, 8, 8 and 4 into the others.
// Counted in pairs of pixels they are 9 each; by the quad rule 3 and 2 on both axes.
TEST(AveragePixelValue, QuadCountsGoByTheFrameBefore) {
    const Frame grey(24 * 24, 90);
    const Means inPairs{160, 80, 80, 40};     // 16 x 90 / 9, 8 x 90 / 9, 4 x 90 / 9
    const Means inBlocks{160, 120, 120, 90};  // 16 x 90 / 9, 8 x 90 / 6, 4 x 90 / 4
    CAveragePixelValue statistics;
    measure(statistics, 24, 24, 16, grey);
    EXPECT_EQ(meansOf(statistics, onlyCell(0)), inPairs);
    measure(statistics, 24, 24, 16, grey);
    EXPECT_EQ(meansOf(statistics, onlyCell(0)), inPairs) << "until something changes";
    statistics.setControlArea({2500, 5000, 7500}, {2500, 5000, 7500});
    measure(statistics, 24, 24, 16, grey);
    EXPECT_EQ(meansOf(statistics, onlyCell(0)), inBlocks);
    // The counts stay the quad's for a first mosaic of pairs: 9, 6, 6, 4 under 9 samples each.
    measure(statistics, 24, 24, 2, grey);
    EXPECT_EQ(meansOf(statistics, onlyCell(0)), (Means{90, 135, 135, 202}));
    measure(statistics, 24, 24, 3, grey);
    EXPECT_EQ(meansOf(statistics, onlyCell(0)), (Means{90, 90, 90, 90}));
}

TEST(AveragePixelValue, AMonochromeFrameAfterAQuadIsDividedByItsCounts) {
    CAveragePixelValue statistics;
    measure(statistics, 24, 24, 16, Frame(24 * 24, 90));
    measure(statistics, 24, 24, 1, Frame(24 * 24, 2));
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 8) << "36 x 2 / 9";
    measure(statistics, 24, 24, 1, Frame(24 * 24, 100));
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 400 % 256) << "the low byte of 36 x 100 / 9";
    statistics.setControlArea({2500, 5000, 7500}, {2500, 5000, 7500});
    measure(statistics, 24, 24, 1, Frame(24 * 24, 100));
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 100);
}

TEST(AveragePixelValue, LinesAt0OnANewObjectMeasureNothing) {
    CAveragePixelValue statistics;
    statistics.setControlArea({0, 0, 0}, {2500, 5000, 7500});
    measure(statistics, 16, 16, 2, Frame(256, 200));
    EXPECT_THAT(meansOf(statistics, kEqual), Each(0));
}

// The counts of the frame before stay: 16 pixels in the last cell of a row, under 16 x 4 of its own.
TEST(AveragePixelValue, LinesAt0KeepTheCountsThatWere) {
    CAveragePixelValue statistics;
    measure(statistics, 16, 16, 1, Frame(256, 20));
    statistics.setControlArea({0, 0, 0}, {2500, 5000, 7500});
    measure(statistics, 16, 16, 1, Frame(256, 20));
    for (std::size_t cell = 0; cell < 16; ++cell) {
        EXPECT_EQ(meansOf(statistics, onlyCell(cell))[0], cell % 4 == 3 ? 80 : 0) << cell;
    }
    // An empty row band ends the walk of all rows behind it.
    statistics.setControlArea({2500, 5000, 7500}, {5000, 5000, 7500});
    measure(statistics, 16, 16, 1, Frame(256, 20));
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 20);
    EXPECT_EQ(meansOf(statistics, onlyCell(4))[0], 0);
    EXPECT_EQ(meansOf(statistics, onlyCell(8))[0], 20) << "4 x 4 pixels, and the count of before";
}

TEST(AveragePixelValue, LinesBehindTheImageAreItsEdge) {
    CAveragePixelValue statistics;
    statistics.setControlArea({5000, 10001, 65535}, {10000, 20000, 65535});
    measure(statistics, 16, 16, 1, Frame(256, 20));
    for (std::size_t cell = 0; cell < 16; ++cell) {
        EXPECT_EQ(meansOf(statistics, onlyCell(cell))[0], cell < 2 ? 20 : 0) << cell;
    }
}

TEST(AveragePixelValue, FallingLinesMakeEmptyCells) {
    CAveragePixelValue statistics;
    statistics.setControlArea({7500, 5000, 2500}, {2500, 5000, 7500});
    Frame frame;
    for (unsigned y = 0; y < 16; ++y) {
        for (unsigned x = 0; x < 16; ++x) frame.push_back(x < 12 ? 50 : 200);
    }
    measure(statistics, 16, 16, 1, frame);
    EXPECT_EQ(meansOf(statistics, onlyCell(0))[0], 50) << "three quarters of the width";
    for (const std::size_t cell : {1, 2, 3}) {
        EXPECT_EQ(meansOf(statistics, onlyCell(cell))[0], 0) << "behind the empty one nothing is counted";
    }
}

TEST(AveragePixelValue, ImagesOf0And1PixelsAreMeasured) {
    CAveragePixelValue statistics;
    measure(statistics, 0, 0, 2, {});
    EXPECT_THAT(meansOf(statistics, kEqual), Each(0));
    statistics.setControlArea({10000, 10000, 10000}, {10000, 10000, 10000});
    measure(statistics, 1, 1, 2, {123});
    EXPECT_THAT(meansOf(statistics, onlyCell(0)), ElementsAre(123, 0, 0, 0));
}

TEST(AveragePixelValue, WeighsTheCells) {
    CAveragePixelValue statistics;
    Frame frame;
    for (unsigned y = 0; y < 4; ++y) {
        for (unsigned x = 0; x < 4; ++x) frame.push_back(static_cast<std::uint8_t>(16 * (4 * y + x)));
    }
    measure(statistics, 4, 4, 1, frame);
    Weights weights{};
    weights[1] = 255;
    weights[14] = 100;
    // (255 x 16 + 100 x 224) / 355 = 74.59
    EXPECT_EQ(meansOf(statistics, weights)[0], 74);
    EXPECT_EQ(luminanceOf(statistics, weights), 74);
}

TEST(AveragePixelValue, WithoutWeightsEverythingIs0) {
    CAveragePixelValue statistics;
    for (const std::uint16_t code : {2, 19, 7}) {
        measure(statistics, 16, 16, code, Frame(256, 99));
        EXPECT_THAT(meansOf(statistics, kNone, {9, 9, 9, 9}), Each(0)) << code;
        EXPECT_EQ(luminanceOf(statistics, kNone), 0) << code;
    }
    measure(statistics, 16, 16, 1, Frame(256, 99));
    EXPECT_THAT(meansOf(statistics, kNone, {9, 9, 9, 9}), ElementsAre(0, 9, 9, 9));
    EXPECT_EQ(luminanceOf(statistics, kNone), 0);
}

TEST(AveragePixelValue, PatternsAreReadThroughTheirFirstPosition) {
    CAveragePixelValue statistics;
    for (const std::uint16_t code : {12, 13, 14, 15}) {
        measure(statistics, 16, 16, code, mosaicFrame(16, 16, {10, 20, 30, 40}));
        EXPECT_THAT(meansOf(statistics, kEqual, {9, 9, 9, 9}), ElementsAre(10, 9, 9, 9));
        EXPECT_EQ(luminanceOf(statistics, kEqual), 10);
    }
}

TEST(AveragePixelValue, CodesThatAreNoMosaicGiveNothing) {
    CAveragePixelValue statistics;
    EXPECT_THAT(meansOf(statistics, kEqual, {9, 8, 7, 6}), ElementsAre(9, 8, 7, 6)) << "a new object";
    for (const std::uint16_t code : {0, 6, 7, 8, 9, 10, 11, 20, 65535}) {
        measure(statistics, 16, 16, code, Frame(256, 99));
        EXPECT_THAT(meansOf(statistics, kEqual, {9, 8, 7, 6}), ElementsAre(9, 8, 7, 6)) << code;
        EXPECT_EQ(luminanceOf(statistics, kEqual), 0) << code;
    }
}

TEST(AveragePixelValue, LuminanceAddsTheSharesOfTheColors) {
    CAveragePixelValue statistics;
    measure(statistics, 16, 16, 2, mosaicFrame(16, 16, {100, 120, 131, 50}));
    // (120 + 131) / 2 = 125: 73.325 + 29.89 + 5.725 = 108.94
    EXPECT_EQ(luminanceOf(statistics, kEqual), 108);
    measure(statistics, 16, 16, 2, Frame(256, 255));
    EXPECT_EQ(luminanceOf(statistics, kEqual), 255);
    measure(statistics, 16, 16, 5, mosaicFrame(16, 16, {255, 0, 0, 0}));
    EXPECT_EQ(luminanceOf(statistics, kEqual), 29) << "255 x 0.1145 = 29.1975";
}

// Each product and each sum is a double of its own: what is added in another order, or in one step, may end
// one below or above.
TEST(AveragePixelValue, LuminanceIsRoundedAtEachStep) {
    CAveragePixelValue statistics;
    statistics.setControlArea({10000, 10000, 10000}, {10000, 10000, 10000});
    for (unsigned grey = 0; grey < 256; ++grey) {
        volatile double sum = 0;
        volatile double product = grey * 0.5866;
        sum = product;
        product = grey * 0.2989;
        sum = sum + product;
        product = grey * 0.1145;
        sum = sum + product;
        measure(statistics, 2, 2, 4, Frame(4, static_cast<std::uint8_t>(grey)));
        EXPECT_EQ(luminanceOf(statistics, onlyCell(0)), static_cast<unsigned>(sum)) << grey;
    }
}

TEST(AveragePixelValue, TheGridIsStoredAsGiven) {
    CAveragePixelValue statistics;
    Boundaries x{};
    Boundaries y{};
    statistics.getControlArea(x, y);
    EXPECT_THAT(x, ElementsAre(2500, 5000, 7500));
    EXPECT_THAT(y, ElementsAre(2500, 5000, 7500));
    statistics.setControlArea({65535, 0, 10001}, {3, 2, 1});
    statistics.getControlArea(x, y);
    EXPECT_THAT(x, ElementsAre(65535, 0, 10001));
    EXPECT_THAT(y, ElementsAre(3, 2, 1));
}

TEST(AveragePixelValue, ResetRestoresTheGridAndForgetsTheCode) {
    for (const bool locked : {true, false}) {
        CAveragePixelValue statistics;
        statistics.setControlArea({10000, 10000, 10000}, {10000, 10000, 10000});
        measure(statistics, 24, 24, 16, Frame(576, 90));
        locked ? statistics.Reset() : statistics.ResetUnlocked();
        Boundaries x{};
        Boundaries y{};
        statistics.getControlArea(x, y);
        EXPECT_THAT(x, ElementsAre(2500, 5000, 7500));
        EXPECT_THAT(y, ElementsAre(2500, 5000, 7500));
        EXPECT_THAT(meansOf(statistics, kEqual, {9, 9, 9, 9}), Each(9)) << "no code, no mosaic";
        measure(statistics, 24, 24, 16, Frame(576, 90));
        EXPECT_THAT(meansOf(statistics, onlyCell(0)), ElementsAre(160, 80, 80, 40))
            << "in pairs, as at first";
    }
}

}  // namespace
}  // namespace tavra::test
