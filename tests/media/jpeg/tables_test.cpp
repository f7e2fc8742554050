// Quantisation and Huffman tables against ITU T.81 annex K.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "media/jpeg/color_component.h"
#include "media/jpeg/huffman_table.h"
#include "media/jpeg/quant_table.h"

namespace tavra::test {
namespace {

using Quant = CJPEGEncoderQuantTable;
using Huffman = CJPEGEncoderHuffmanTable;

JpegSteps scaled(const JpegSteps& steps, unsigned quality) {
    Quant table;
    table.Load(0, steps);
    table.Scale(quality);
    return table.steps();
}

TEST(JpegQuantTable, StepsStandInZigZagOrder) {
    // K.1: 16 11 10 16 ... / 12 12 14 ... / 14 13 ... / 14 ... read along the first diagonals.
    const std::uint8_t luminance[] = {16, 11, 12, 14, 12, 10, 16, 14, 13, 14};
    EXPECT_TRUE(std::equal(std::begin(luminance), std::end(luminance), Quant::kLuminance.begin()));
    // K.2: 17 18 24 47 / 18 21 26 66 / 24 26 56 99 / 47 66 99 99, and 99 everywhere else.
    const std::uint8_t chrominance[] = {17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66, 99};
    EXPECT_TRUE(std::equal(std::begin(chrominance), std::end(chrominance), Quant::kChrominance.begin()));
    EXPECT_TRUE(std::all_of(Quant::kChrominance.begin() + 14, Quant::kChrominance.end(),
                            [](std::uint8_t step) { return step == 99; }));
    // The lower right corner of K.1: 103 99 in its last row, 101 above the 99.
    EXPECT_EQ(Quant::kLuminance[63], 99);
    EXPECT_EQ(Quant::kLuminance[62], 103);
    EXPECT_EQ(Quant::kLuminance[61], 101);
}

TEST(JpegQuantTable, QualityScalesTheSteps) {
    EXPECT_EQ(scaled(Quant::kLuminance, 50), Quant::kLuminance);
    EXPECT_EQ(scaled(Quant::kLuminance, 0), Quant::kLuminance) << "0 leaves them alone";
    for (const std::uint8_t step : scaled(Quant::kChrominance, 100)) EXPECT_EQ(step, 1);
    for (const std::uint8_t step : scaled(Quant::kLuminance, 1)) EXPECT_EQ(step, 255);  // 50 times, clamped
    EXPECT_EQ(scaled(Quant::kLuminance, 99)[0], 1);     // (16 * 2 + 50) / 100 = 0, clamped
    EXPECT_EQ(scaled(Quant::kLuminance, 99)[63], 2);    // (99 * 2 + 50) / 100 = 2.48
    EXPECT_EQ(scaled(Quant::kLuminance, 75)[0], 8);     // (16 * 50 + 50) / 100 = 8.5
    EXPECT_EQ(scaled(Quant::kLuminance, 75)[1], 6);     // (11 * 50 + 50) / 100 = 6
    EXPECT_EQ(scaled(Quant::kLuminance, 49)[0], 16);    // 5000 / 49 = 102; (16 * 102 + 50) / 100 = 16.82
    EXPECT_EQ(scaled(Quant::kLuminance, 49)[63], 101);  // (99 * 102 + 50) / 100 = 101.48
    EXPECT_EQ(scaled(Quant::kLuminance, 25)[0], 32);
    EXPECT_EQ(scaled(Quant::kLuminance, 10)[1], 55);  // 500: (11 * 500 + 50) / 100 = 55.5
}

TEST(JpegQuantTable, HoldsItsNumberAndPrecision) {
    Quant table;
    EXPECT_FALSE(table.initialized());
    table.Load(3, Quant::kLuminance);
    EXPECT_TRUE(table.initialized());
    EXPECT_EQ(table.id(), 3u);
    EXPECT_EQ(table.precision(), 0u);
    table.Clear();
    EXPECT_FALSE(table.initialized());
}

// The bits of a symbol's code, as annex K prints them.
std::string codeOf(const Huffman& table, unsigned symbol) {
    const std::uint32_t entry = table.lookUp()[symbol];
    const unsigned extra = symbol & 15, length = (entry & 31) - extra;
    std::string bits;
    for (unsigned i = length; i-- > 0;) bits += (entry >> (5 + extra + i) & 1) != 0 ? '1' : '0';
    return bits;
}

struct Loaded : Huffman {
    Loaded(Class tableClass, const JpegHuffmanCodes& codes) {
        EXPECT_EQ(Load(1, tableClass, codes), JpegError::None);
    }
};

TEST(JpegHuffmanTable, DcCodesAreThoseOfK3AndK4) {
    const Loaded luminance(Huffman::Class::Dc, Huffman::kDcLuminance);
    const char* const k3[] = {"00",   "010",   "011",    "100",     "101",      "110",
                              "1110", "11110", "111110", "1111110", "11111110", "111111110"};
    for (unsigned i = 0; i < 12; ++i) EXPECT_EQ(codeOf(luminance, i), k3[i]) << i;
    const Loaded chrominance(Huffman::Class::Dc, Huffman::kDcChrominance);
    const char* const k4[] = {"00",     "01",      "10",       "110",       "1110",       "11110",
                              "111110", "1111110", "11111110", "111111110", "1111111110", "11111111110"};
    for (unsigned i = 0; i < 12; ++i) EXPECT_EQ(codeOf(chrominance, i), k4[i]) << i;
}

TEST(JpegHuffmanTable, AcCodesAreThoseOfK5) {
    const Loaded table(Huffman::Class::Ac, Huffman::kAcLuminance);
    const struct {
        unsigned symbol;
        const char* code;
    } rows[] = {{0x00, "1010"},
                {0x01, "00"},
                {0x02, "01"},
                {0x03, "100"},
                {0x04, "1011"},
                {0x05, "11010"},
                {0x08, "1111110110"},
                {0x0A, "1111111110000011"},
                {0x11, "1100"},
                {0x12, "11011"},
                {0x21, "11100"},
                {0x31, "111010"},
                {0x41, "111011"},
                {0x16, "1111111110000100"},
                {0xF0, "11111111001"},
                {0xF1, "1111111111110101"},
                {0xFA, "1111111111111110"}};
    for (const auto& row : rows) EXPECT_EQ(codeOf(table, row.symbol), row.code) << std::hex << row.symbol;
    EXPECT_EQ(table.symbols().size(), 162u);
}

TEST(JpegHuffmanTable, AcCodesAreThoseOfK6) {
    const Loaded table(Huffman::Class::Ac, Huffman::kAcChrominance);
    const struct {
        unsigned symbol;
        const char* code;
    } rows[] = {{0x00, "00"},
                {0x01, "01"},
                {0x02, "100"},
                {0x03, "1010"},
                {0x04, "11000"},
                {0x11, "1011"},
                {0x21, "11010"},
                {0x31, "11011"},
                {0x41, "111010"},
                {0xF0, "1111111010"},
                {0xF1, "111111111000011"},
                {0x0A, "111111110100"},
                {0xFA, "1111111111111110"}};
    for (const auto& row : rows) EXPECT_EQ(codeOf(table, row.symbol), row.code) << std::hex << row.symbol;
    EXPECT_EQ(table.symbols().size(), 162u);
}

TEST(JpegHuffmanTable, NoCodeBeginsWithAnotherAndNoneIsAllOnes) {
    for (const JpegHuffmanCodes* codes : {&Huffman::kAcLuminance, &Huffman::kAcChrominance}) {
        const Loaded table(Huffman::Class::Ac, *codes);
        std::vector<std::string> all;
        for (const std::uint8_t symbol : table.symbols()) all.push_back(codeOf(table, symbol));
        std::sort(all.begin(), all.end());
        for (std::size_t i = 1; i < all.size(); ++i) EXPECT_FALSE(all[i].starts_with(all[i - 1])) << all[i];
        EXPECT_NE(all.back().find('0'), std::string::npos);
    }
}

TEST(JpegHuffmanTable, SymbolsWithoutACodeAreZero) {
    const Loaded table(Huffman::Class::Ac, Huffman::kAcLuminance);
    for (const unsigned symbol : {0x0Bu, 0x10u, 0x20u, 0xFBu, 0xE0u, 0x100u})
        EXPECT_EQ(table.lookUp()[symbol], 0u);
}

TEST(JpegColorComponent, SelectorsAboveFourAreRefused) {
    CJPEGColorComponent component;
    EXPECT_EQ(component.Select(4, 3, 2), JpegError::None);
    EXPECT_EQ(component.quantSelector, 4u);
    EXPECT_EQ(component.dcSelector, 3u);
    EXPECT_EQ(component.acSelector, 2u);
    EXPECT_EQ(component.Select(5, 0, 0), JpegError::WrongParameters);
    EXPECT_EQ(component.Select(0, 5, 0), JpegError::WrongParameters);
    EXPECT_EQ(component.Select(0, 0, 5), JpegError::WrongParameters);
    EXPECT_EQ(component.quantSelector, 4u) << "as before";
}

}  // namespace
}  // namespace tavra::test
