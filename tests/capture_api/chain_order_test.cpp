// Each stage acts in its place, whatever the frame is made of.
#include <functional>

#include "capture_api/chain_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kWidth = 8, kHeight = 6;

class ChainOrder : public ChainTest, public testing::WithParamInterface<std::uint32_t> {};

// The parameter is the preview format.
TEST_P(ChainOrder, EveryClassOfFramesGoesThroughItsStages) {
    const std::uint32_t codes[] = {1,    2,    4,     8,         16,        0x10000,  0x20000, 32,
                                   64,   128,  256,   512,       0x100000,  0x200000, 1024,    2048,
                                   4096, 8192, 16384, 0x1000000, 0x2000000, 0x4000000};
    for (const std::uint32_t code : codes) {
        SCOPED_TRACE(testing::Message() << "transfer bits " << code);
        const ChainFrame frame{.width = kWidth,
                               .height = kHeight,
                               .transferBits = code,
                               .colorArray = static_cast<std::uint16_t>(GetParam() == 1 ? 1 : 2),
                               .previewFormat = GetParam(),
                               .reducesNoise = true};
        ASSERT_NO_FATAL_FAILURE(open(frame));
        ASSERT_NO_FATAL_FAILURE(dress(record(), kWidth, kHeight));
        PlainChain plain(frame);
        ASSERT_NO_FATAL_FAILURE(dress(plain.stages(), kWidth, kHeight));
        const Bytes raw = noise(code);
        EXPECT_EQ(preview(raw).data, plain.image(raw));
        close();
    }
}

INSTANTIATE_TEST_SUITE_P(PreviewFormats, ChainOrder, testing::Values(1u, 4u, 8u));

class ChainOrderOf : public ChainTest {
  protected:
    // A dressed frame with colour array 2, after a change of one setting on both sides.
    void expectAsPlainWith(const ChainFrame& frame, const std::function<void(TAVRA_COMMON_PARAM&)>& change,
                           Bytes* image = nullptr) {
        ASSERT_NO_FATAL_FAILURE(open(frame));
        ASSERT_NO_FATAL_FAILURE(dress(record(), frame.width, frame.height));
        change(record());
        PlainChain plain(frame);
        ASSERT_NO_FATAL_FAILURE(dress(plain.stages(), frame.width, frame.height));
        change(plain.stages());
        const Bytes raw = noise(5);
        const Bytes seen = preview(raw).data;
        EXPECT_EQ(seen, plain.image(raw));
        if (image != nullptr) *image = seen;
        close();
    }
};

// Otherwise the comparison with the plain chain would say nothing of a stage.
TEST_F(ChainOrderOf, EveryStageChangesTheImage) {
    const ChainFrame frame{.width = kWidth, .height = kHeight, .colorArray = 2, .reducesNoise = true};
    Bytes all;
    ASSERT_NO_FATAL_FAILURE(expectAsPlainWith(
        frame, [](TAVRA_COMMON_PARAM&) {}, &all));
    const struct {
        const char* name;
        void (*off)(TAVRA_COMMON_PARAM&);
    } stages[] = {
        {"noise reduction", [](TAVRA_COMMON_PARAM& s) { s.noiseReduction.setMode(0); }},
        {"white balance", [](TAVRA_COMMON_PARAM& s) { EXPECT_TRUE(s.whiteBalance->setMode(0).ok()); }},
        {"shading", [](TAVRA_COMMON_PARAM& s) { s.shadingCorrection->SetMode(0); }},
        {"gamma of positions",
         [](TAVRA_COMMON_PARAM& s) {
             for (std::uint8_t i = 1; i < 5; ++i) s.gamma->SetGamma(i, 0, 0, 0, 0, nullptr, 8);
         }},
        {"gamma of luminance", [](TAVRA_COMMON_PARAM& s) { s.gamma->SetGamma(0, 0, 0, 0, 0, nullptr, 8); }},
        {"sharpness", [](TAVRA_COMMON_PARAM& s) { s.sharpness->SetMode(0, 0, 0); }},
        {"matrix", [](TAVRA_COMMON_PARAM& s) { s.colorMatrix->SetColorMatrix(0, nullptr); }},
        {"hue and saturation", [](TAVRA_COMMON_PARAM& s) { s.colorMatrix->SetHueSaturation(0, 0, 0); }},
        {"high chroma", [](TAVRA_COMMON_PARAM& s) { s.chromaSuppress->SetHighStrength(0); }},
        {"low chroma", [](TAVRA_COMMON_PARAM& s) { s.chromaSuppress->SetLowStrength(0); }},
    };
    for (const auto& stage : stages) {
        SCOPED_TRACE(stage.name);
        Bytes without;
        ASSERT_NO_FATAL_FAILURE(expectAsPlainWith(frame, stage.off, &without));
        EXPECT_NE(without, all);
    }
}

TEST_F(ChainOrderOf, EveryColorArrayHasItsWay) {
    for (std::uint16_t array = 1; array <= 19; ++array) {
        if (array >= 6 && array <= 11) continue;  // YCbCr, not of a mosaic
        SCOPED_TRACE(array);
        const ChainFrame frame{.width = kWidth, .height = kHeight, .colorArray = array, .reducesNoise = true};
        expectAsPlainWith(frame, [](TAVRA_COMMON_PARAM&) {});
    }
}

TEST_F(ChainOrderOf, SmallAndOddFramesToo) {
    const std::uint32_t sizes[][2] = {{1, 1}, {2, 1}, {1, 2}, {2, 2}, {3, 3}, {7, 5}, {5, 8}};
    for (const auto& [width, height] : sizes) {
        for (const std::uint32_t code : {1u, 4u, 32u, 64u, 1024u, 2048u}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << ", transfer bits " << code);
            const ChainFrame frame{.width = width,
                                   .height = height,
                                   .transferBits = code,
                                   .colorArray = 5,
                                   .mirror = 1,
                                   .rotation = 2};
            expectAsPlainWith(frame, [](TAVRA_COMMON_PARAM&) {});
        }
    }
}

TEST_F(ChainOrderOf, EveryInterpolationMethodIsHandedOn) {
    for (std::uint8_t method = 0; method <= 5; ++method) {
        SCOPED_TRACE(int{method});
        const ChainFrame frame{.width = kWidth, .height = kHeight, .colorArray = 3, .method = method};
        expectAsPlainWith(frame, [](TAVRA_COMMON_PARAM&) {});
    }
}

// Reckoned by hand, without a stage of the library: R G / G B of 4 x 2, gains R 2.0 and B 0.5, offsets of
// shading, a reversed red curve, a horizontal mirror, one colour a pixel, a luminance curve that adds 10, and
// a matrix that exchanges red and blue. The matrix adds a level to each channel.
TEST_F(ChainOrderOf, ASmallMosaicIsAsReckonedByHand) {
    const ChainFrame frame{.width = 4, .height = 2, .colorArray = 2, .method = 1, .mirror = 1};
    ASSERT_NO_FATAL_FAILURE(open(frame));
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, TAVRA_WHITE_BALANCE_MANUAL));
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(handle, 256, 128, 128, 64));
    const std::int32_t map[8] = {4, -10, 0, 5, 0, 0, 7, -100};
    ASSERT_TRUE(Tavra_SetShadingCorrectionMap(handle, 4, 2, 16, map));
    ASSERT_TRUE(Tavra_SetShadingCorrectionMode(handle, 4));
    Bytes reversed(256), brighter(256);
    for (int i = 0; i < 256; ++i) {
        reversed[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(255 - i);
        brighter[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(std::min(255, i + 10));
    }
    ASSERT_EQ(record().gamma->SetGamma(1, 255, 0, 0, 0, reversed.data(), 8), 0u);
    ASSERT_EQ(record().gamma->SetGamma(0, 255, 0, 0, 0, brighter.data(), 8), 0u);
    const std::int16_t exchange[12] = {0, 0, 100, 0, 0, 100, 0, 0, 100, 0, 0, 0};
    ASSERT_TRUE(Tavra_SetColorMatrix(handle, 0xFF, exchange));

    const Bytes raw{20,  40,  60,  80,    // R G R G
                    100, 120, 140, 160};  // G B G B
    // gains:   40 40 120 80 / 100 60 140 80
    // shading: 44 30 120 85 / 100 60 147  0
    // curve:  211 30 135 85 / 100 60 147  0
    // mirror:  85 135 30 211 / 0 147 60 100, now G R G R / B G B G
    // + 10 on all three channels by the luminance curve, + 1 by the matrix, red and blue exchanged.
    const Bytes expected{11, 96, 11, 146, 11,  11, 11, 41, 11, 222, 11,  11,   // G R G R, red in front
                         11, 11, 11, 11,  158, 11, 11, 11, 71, 11,  111, 11};  // B G B G, blue behind
    EXPECT_EQ(preview(raw).data, expected);
}

// 12 bits in words: 8 bits before anything else; a mono frame has no curves of positions, no matrix and no
// suppression.
TEST_F(ChainOrderOf, ASmallMonoFrameIsAsReckonedByHand) {
    const ChainFrame frame{
        .width = 3, .height = 3, .transferBits = 128, .colorArray = 2, .previewFormat = 4, .rotation = 1};
    ASSERT_NO_FATAL_FAILURE(open(frame));
    ASSERT_NO_FATAL_FAILURE(dress(record(), 3, 3));
    Bytes brighter(256);
    for (std::size_t i = 0; i < 256; ++i) brighter[i] = static_cast<std::uint8_t>(i < 250 ? i + 5 : 255);
    ASSERT_EQ(record().gamma->SetGamma(0, 255, 0, 0, 0, brighter.data(), 8), 0u);
    ASSERT_EQ(record().sharpness->SetMode(1, 100, 0), 0u);
    Bytes raw;
    for (const std::uint32_t sample :
         {0x10Fu, 0x200u, 0x300u, 0x400u, 0x9FFu, 0x600u, 0x700u, 0x800u, 0x900u}) {
        raw.push_back(static_cast<std::uint8_t>(sample));
        raw.push_back(static_cast<std::uint8_t>(sample >> 8));
    }
    // 16 32 48 / 64 159 96 / 112 128 144, clockwise 112 64 16 / 128 159 32 / 144 96 48, and 5 more each. The
    // mean of the eight around the middle, 164, is 85: 164 + 79.
    const Bytes grey{117, 69, 21, 133, 243, 37, 149, 101, 53};
    Bytes expected;
    for (std::size_t i = 0; i < 9; ++i) {
        expected.insert(expected.end(), 3, grey[i]);
        if (i % 3 == 2) expected.insert(expected.end(), 3, 0);
    }
    Bytes seen = preview(raw).data;
    ASSERT_EQ(seen.size(), expected.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (i % 12 >= 9) seen[i] = 0;  // the padding of a row is anything
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(ChainOrderOf, RawConsumersSeeTheFrameBeforeAnyStage) {
    const ChainFrame frame{
        .width = kWidth, .height = kHeight, .colorArray = 2, .mirror = 1, .reducesNoise = true};
    ASSERT_NO_FATAL_FAILURE(open(frame));
    ASSERT_NO_FATAL_FAILURE(dress(record(), kWidth, kHeight));
    collectRaw();
    const Bytes raw = noise(9);
    const Bytes seen = preview(raw).data;
    EXPECT_NE(seen, Bytes());
    const auto consumed = raws.waitFor(1);
    ASSERT_EQ(consumed.size(), 1u);
    EXPECT_EQ(consumed[0].data, raw);
    EXPECT_EQ(consumed[0].colorArray, 2) << "turned by the camera only";
}

}  // namespace
}  // namespace tavra::test
